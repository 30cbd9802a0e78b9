// The store: one SQLite file that holds a collection without loss and is pleasant to query by hand.
//
// Each table id is an SQL table with the columns qv_seq (the record's place in the whole collection,
// from 1) and one column a property id, so that
//     sqlite3 report.sqlite 'select item1,item2 from SENSORINFO'
// works. What a row cannot say (record name and index, order of properties, display texts, layouts,
// modules) is in the tables qv_*.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "repository/record.h"
#include "store/command_info.h"

namespace qvhost {

struct TableInfo {
    std::string id;
    std::string title;  // for people, as the plug-in declares it; empty: it does not
    Layout layout;
    std::int64_t records = 0;
    // Why it is empty; of a table with records, why these are not all. For people; empty: nothing is
    // missing that is known of.
    std::string reason;
};

struct PropertyInfo {
    std::string id;
    std::string display;
};

struct ModuleInfo {
    std::string name;
    std::string display;
    std::vector<TableInfo> tables;
};

// A line about the machine as a whole.
struct Fact {
    std::string label;
    std::string value;
    std::string source;  // the capture that says so; empty: none
    bool operator==(const Fact&) const = default;
};

struct TypedColumn;  // typed_table.h
struct StoredColumn;
// NULL, or a value of the column's type.
using TypedValue = std::variant<std::monostate, std::int64_t, double, std::string>;

class Store {
public:
    enum class Mode { create, update, read };

    // create: a new file (mode 0600), replacing none: throws if it exists. Its directory must be one that
    // this program made, since SQLite acts on what lies beside a file of that name. update: the same, to go
    // on filling it. read: a file that anybody made; never writes, not even beside the file
    // (readable_file.h). Throws std::runtime_error naming the file.
    Store(const std::string& path, Mode mode);
    ~Store();
    Store(Store&&) noexcept;

    // Filling. Changes become durable with commit(), which the caller makes at least every half
    // second while records come in.
    void add_module(const std::string& name, const std::string& display);
    void add_table(const std::string& module, const std::string& id);
    void set_layout(const std::string& id, const Layout& layout);
    void set_reason(const std::string& id, const std::string& reason);
    void add(const Record& record);
    void commit();

    // Facts about the collection as a whole: "started", "finished", "status", ... (UTF-8 texts).
    void set_meta(const std::string& key, const std::string& value);
    std::string meta(const std::string& key) const;  // empty if not set
    std::map<std::string, std::string> all_meta() const;

    // How the collection ended: the meta values "status", which is "running", "complete" or "incomplete",
    // and "incomplete_because". An empty reason: it is complete.
    void set_status(const std::string& incomplete_because);
    // "complete", "incomplete: REASON", ... for people.
    std::string status_text() const;

    void set_facts(const std::vector<Fact>& facts);
    std::vector<Fact> facts() const;
    void set_commands(const std::vector<CommandInfo>& commands);
    std::vector<CommandInfo> commands() const;

    // Of a store that is read: what SQLite opens as the same file, with SQLITE_OPEN_URI, while this
    // object lives.
    const std::string& uri() const;

    // Reading. Modules in the order in which they were added, tables in theirs.
    std::vector<ModuleInfo> modules() const;

    // The properties that records of the table have, each id once with the label it had first.
    std::vector<PropertyInfo> properties(const std::string& table) const;

    // Every record in the order in which it was added, or those of one table.
    void each_record(const std::function<void(const Record&)>& take) const;
    void each_record(const std::string& table,
                     const std::function<void(const Record&)>& take) const;

private:
    friend class TypedTableWriter;
    friend void each_typed_row_while(const Store&, const char*, std::span<const TypedColumn>,
                                     const std::function<bool(const std::vector<TypedValue>&)>&);
    friend std::vector<StoredColumn> stored_columns(const Store&, const std::string&);
    friend void each_stored_row(const Store&, const std::string&,
                                const std::function<void(const std::vector<TypedValue>&)>&);
    friend std::int64_t count_stored_rows(const Store&, const std::string&);
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace qvhost
