// The other host's base class of modules: members of its own before and behind the map, and one more
// virtual operation behind those that a module implements.
#pragma once

#include <array>
#include <boost/function.hpp>
#include <map>
#include <string>

namespace marlox::repository {

class RRepository;
class RInstancesWrapper;

class RModule {
public:
    struct _callbacks_t {
        boost::function<void(RRepository&)> enumerate;
        boost::function<void(RInstancesWrapper&)> wrap;
    };

    RModule();
    virtual ~RModule();

    virtual std::string GetName() = 0;
    virtual std::string GetDisplay() = 0;
    virtual void InitCallbacks() = 0;
    virtual std::string GetVersion();

private:
    std::array<unsigned char, 120> before_;

public:
    std::map<std::string, _callbacks_t> callbacks;

    // Whether nobody has written over this host's own members.
    bool sound() const;

private:
    std::array<unsigned char, 72> behind_;
};

}  // namespace marlox::repository
