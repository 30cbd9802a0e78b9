// The other host's record: it holds its properties itself, and other calls stand between those that
// modules use.
#pragma once

#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace marlox::repository {

class RRepository;

class RInstance {
public:
    struct Property {
        std::string id, display;
        std::variant<std::string, int> value;
    };

    RInstance(const std::string& tableId, const std::string& displayName, int index);
    virtual ~RInstance();

    const std::string& table() const { return table_; }
    const std::string& name() const { return name_; }
    int index() const { return index_; }
    const std::vector<Property>& properties() const { return properties_; }

    void AddProperty(const std::string& id, const std::string& display, const std::string& value);
    void AddProperty(const std::string& id, const std::string& display, int value);
    void AddToRepository(RRepository& repository) const;

private:
    void set(const std::string& id, const std::string& display,
             std::variant<std::string, int> value);

    int index_;
    std::vector<Property> properties_;
    std::string name_;
    std::string table_;
};

}  // namespace marlox::repository
