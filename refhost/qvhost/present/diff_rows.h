// Rows of two stores that only one of them has: events, and records of the plug-in's tables. Rows are
// counted and never held, so that a million of them take little more memory than a thousand.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "compare/multiset.h"
#include "inventory/entities.h"
#include "repository/record.h"
#include "store/store.h"
#include "text/keyed_hash.h"

namespace qvhost {

template <class Row>
class RowDifference {
public:
    using Take = std::function<void(const Row&)>;
    // Hands on each row of a store, in order, at least until the function returns false.
    using TakeWhile = std::function<bool(const Row&)>;
    using Rows = std::function<void(const TakeWhile&)>;
    // What makes two rows the same, as bytes.
    using Identity = std::function<void(const Row&, std::string&)>;

    // What a store holds: all of its rows, and the same rows with what their identity needs.
    struct Source {
        Rows rows, identities;
    };

    RowDifference(Source from, Source to, Identity identity)
        : from_(std::move(from)),
          to_(std::move(to)),
          identity_(std::move(identity)),
          difference_(hashes_of(from_.identities), hashes_of(to_.identities)) {}
    RowDifference(const RowDifference&) = delete;
    RowDifference& operator=(const RowDifference&) = delete;

    void each_new(const Take& take) {
        difference_.each_new([&](const auto& is_told) { tell(to_.rows, is_told, take); });
    }
    void each_gone(const Take& take) {
        difference_.each_gone([&](const auto& is_told) { tell(from_.rows, is_told, take); });
    }

private:
    std::uint64_t hash_of(const Row& row) {
        bytes_.clear();
        identity_(row, bytes_);
        return hash_(bytes_);
    }
    compare::Hashes hashes_of(const Rows& rows) {
        return [this, &rows](const std::function<void(std::uint64_t)>& take) {
            rows([&](const Row& row) {
                take(hash_of(row));
                return true;
            });
        };
    }
    void tell(const Rows& rows, const compare::MultisetDifference::Told& is_told,
              const Take& take) {
        rows([&](const Row& row) {
            if (is_told(hash_of(row))) take(row);
            return !is_told.is_done();
        });
    }

    Source from_, to_;
    Identity identity_;
    KeyedHash hash_;
    std::string bytes_;
    compare::MultisetDifference difference_;
};

// Events are the same by source, time and text. The stores outlive it.
class EventDifference : public RowDifference<inventory::Event> {
public:
    EventDifference(const Store& from, const Store& to);
};

// Records of a table are the same by their name and all values. The stores outlive it.
class RecordDifference : public RowDifference<Record> {
public:
    RecordDifference(const Store& from, const Store& to, const std::string& table);
};

}  // namespace qvhost
