// What stands for each value: the same in all of a bundle, and with the same map in all bundles.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "redact/search.h"
#include "redact/values.h"

namespace qvhost::redact {

class Substitutes {
public:
    // With a key of its own, so that two bundles have nothing in common.
    Substitutes();
    Substitutes(std::string key, std::map<Value, std::string> known);

    // Finds one for each value that has none. No replacement is a value, contains one, or stands for two.
    void assign(const Values& values);

    // In canonical form. assign() was called with the value.
    const std::string& of(const Value& value) const { return known_.at(value); }
    bool has(const Value& value) const { return known_.count(value) > 0; }
    // Whether the value is one that stands for another: of a report that was redacted before.
    bool is_replacement(const Value& value) const { return taken_.count(value) > 0; }

    const std::string& key() const { return key_; }
    const std::map<Value, std::string>& all() const { return known_; }

private:
    std::string assigned(const Value& value);
    std::string assigned_host(const Value& value);
    std::string with_labels_assigned(std::string_view host, bool keeps_last);
    bool is_free(const Value& value, const std::string& candidate) const;

    std::string key_;
    std::map<Value, std::string> known_;
    std::set<Value> taken_;
    std::set<std::string> originals_;
    Search in_originals_{kShortestSearched};
};

}  // namespace qvhost::redact
