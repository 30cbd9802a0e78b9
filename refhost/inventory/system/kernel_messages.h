// The kernel's messages that say that something is wrong.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "inventory/entities.h"

namespace qvhost::inventory {

struct KernelForm {
    std::string_view form;             // of forms.h; "{}" is the subject
    std::optional<Severity> severity;  // empty: harmless, whatever a later row says
    std::string_view subject;          // where the form has no "{}"
    std::string_view why;
};

// The first row that matches a message decides.
std::span<const KernelForm> kernel_forms();

struct KernelMessage {
    const KernelForm* form;  // has a severity
    std::string_view subject;
};

// What a message says, without the time before it; nothing if it is harmless or no row knows it.
std::optional<KernelMessage> judge_kernel_message(std::string_view text);

}  // namespace qvhost::inventory
