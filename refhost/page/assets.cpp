#include "page/assets.h"

#include <cstddef>

// QV_HTML, QV_SCRIPT and QV_STYLE are the files' names; each is followed by a label at its end.
#define QV_EMBED(name, file)                \
    asm(".pushsection .rodata\n"            \
        ".global qv_page_" name             \
        "\n"                                \
        ".global qv_page_" name             \
        "_end\n"                            \
        "qv_page_" name ": .incbin \"" file \
        "\"\n"                              \
        "qv_page_" name                     \
        "_end: .byte 0\n"                   \
        ".popsection\n")

QV_EMBED("html", QV_HTML);
QV_EMBED("script", QV_SCRIPT);
QV_EMBED("style", QV_STYLE);

extern "C" {
extern const char qv_page_html[], qv_page_html_end[];
extern const char qv_page_script[], qv_page_script_end[];
extern const char qv_page_style[], qv_page_style_end[];
}

namespace qvhost::page {

namespace {

std::string_view between(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

}  // namespace

std::string_view html() { return between(qv_page_html, qv_page_html_end); }
std::string_view script() { return between(qv_page_script, qv_page_script_end); }
std::string_view style() { return between(qv_page_style, qv_page_style_end); }

}  // namespace qvhost::page
