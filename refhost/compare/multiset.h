// What one long list has and another one has not, counted: of three equal items against two, one is new.
// The lists are read several times and never held; memory has a bound whatever their length.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace qvhost::compare {

// Hands the hash of each item, in order, to the function; each time the same.
using Hashes = std::function<void(const std::function<void(std::uint64_t)>&)>;

class MultisetDifference {
public:
    static constexpr std::size_t kUsualMost = std::size_t{1} << 20;

    // About so many hashes of each list are held at a time, unless most of a list is equal.
    MultisetDifference(Hashes from, Hashes to, std::size_t most_held = kUsualMost);

    // Says of each item of a list, by its hash, whether it is one that the other list lacks.
    class Told {
    public:
        bool operator()(std::uint64_t hash) const;
        bool is_done() const { return left_->all == 0; }  // it would say so of none that follows

    private:
        friend class MultisetDifference;
        struct Left {
            std::vector<std::uint64_t> hashes;  // in order
            std::vector<std::size_t> counts;    // of each, how often it is still to be said
            std::size_t all = 0;
        };
        explicit Told(Left& left) : left_(&left) {}
        Left* left_;
    };

    // Goes through a list, handing each item's hash on. A list that is too long is walked more than once, each
    // item being told of once.
    using Walk = std::function<void(const Told&)>;
    void each_new(const Walk& walk) { each(new_, walk); }
    void each_gone(const Walk& walk) { each(gone_, walk); }

private:
    // Hashes of which one list has more, in order, as often as it has more.
    using Sorted = std::vector<std::uint64_t>;

    // Whether the part fits, or need not.
    bool load(std::size_t part, bool must_fit);
    void each(Sorted& extra, const Walk& walk);

    Hashes from_, to_;
    std::size_t most_held_;
    std::size_t parts_ = 1;  // the lists are compared in so many parts, by the hashes' last bits
    std::size_t loaded_ = 0;
    Sorted new_, gone_;
};

}  // namespace qvhost::compare
