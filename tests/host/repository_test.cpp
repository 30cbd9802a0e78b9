#include <gtest/gtest.h>

#include "repository/sink.h"
#include "rinstance.h"

using namespace marlox::repository;

namespace {

struct Kept : RRepository::Impl {
    std::vector<qvhost::Record> records;
    void add(const qvhost::Record& record) override { records.push_back(record); }
};

TEST(Repository, ARecordIsCopiedWhenItIsAdded) {
    Kept kept;
    RRepository repository(kept);
    RInstance record("T", "a name", -1);
    record.AddToRepository(repository);
    record.AddProperty("a", "A", "1");
    record.AddProperty("b", "B", 2);
    record.AddToRepository(repository);
    record.AddProperty("a", "other", 3);  // keeps its place, also with another kind of value
    record.AddProperty("b", "B", std::string("x\0y", 3));
    record.AddToRepository(repository);
    EXPECT_EQ(kept.records,
              (std::vector<qvhost::Record>{
                  {"T", "a name", -1, {}},
                  {"T", "a name", -1, {{"a", "A", "1"}, {"b", "B", 2}}},
                  {"T", "a name", -1, {{"a", "other", 3}, {"b", "B", std::string("x\0y", 3)}}},
              }));
}

TEST(Repository, WhatTheHostThrowsReachesTheModule) {
    struct Full : RRepository::Impl {
        void add(const qvhost::Record&) override { throw std::runtime_error("full"); }
    } full;
    RRepository repository(full);
    const RInstance record("T", "", -1);
    EXPECT_THROW(record.AddToRepository(repository), std::runtime_error);
}

TEST(Repository, TheLastLayoutCounts) {
    RInstancesWrapper::Impl layout;
    RInstancesWrapper wrapper(layout);
    EXPECT_EQ(layout.layout, qvhost::Layout());
    wrapper.SetColumnHeaders({"a", "b"}, 30, 2);
    EXPECT_EQ(layout.layout, qvhost::Layout(qvhost::ColumnLayout{{"a", "b"}, 30, 2}));
    wrapper.SetRowHeaders({"a"}, {100}, false);
    EXPECT_EQ(layout.layout, qvhost::Layout(qvhost::RowLayout{{"a"}, {100}, false}));
}

}  // namespace
