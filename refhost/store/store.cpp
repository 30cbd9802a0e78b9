#include "store/store.h"

#include <boost/algorithm/string/finder.hpp>
#include <boost/algorithm/string/iter_find.hpp>
#include <boost/algorithm/string/join.hpp>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "store/declared_table.h"
#include "store/impl.h"

namespace qvhost {

using SQLite::Statement;
using store::identifier;
using store::with_file_name;

namespace {

constexpr const char* kBetweenCaptures = ", ";

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> parts;
    if (!text.empty()) boost::iter_split(parts, text, boost::first_finder(kBetweenCaptures));
    return parts;
}

template <class Value, class Get>
std::optional<Value> unless_null(const SQLite::Column& column, Get get) {
    return column.isNull() ? std::nullopt : std::optional<Value>(get(column));
}

std::vector<CommandInfo> recorded_commands(const SQLite::Database& db) {
    const auto text = [](const SQLite::Column& column) { return column.getString(); };
    const auto number = [](const SQLite::Column& column) { return column.getInt(); };
    std::vector<CommandInfo> commands;
    for (Statement q(
             db,
             "SELECT command, lane, origin, tool, started, seconds, exit, signal, stopped_by, "
             "captures, stderr, remark FROM qv_command ORDER BY position");
         q.executeStep();) {
        commands.push_back({
            .text = q.getColumn(0).getString(),
            .lane = q.getColumn(1).getInt(),
            .origin = q.getColumn(2).getString(),
            .tool = q.getColumn(3).getString(),
            .started = unless_null<std::string>(q.getColumn(4), text),
            .seconds = unless_null<double>(
                q.getColumn(5), [](const SQLite::Column& column) { return column.getDouble(); }),
            .exit = unless_null<int>(q.getColumn(6), number),
            .signal = unless_null<int>(q.getColumn(7), number),
            .stopped_by = q.getColumn(8).getString(),
            .captures = split(q.getColumn(9).getString()),
            .standard_error = q.getColumn(10).getString(),
            .remark = q.getColumn(11).getString(),
        });
    }
    return commands;
}

// Those of a store that an older program made.
std::vector<CommandInfo> commands_in_words(const SQLite::Database& db) {
    std::vector<CommandInfo> commands;
    for (Statement q(db,
                     "SELECT command, seconds, outcome, cut_off FROM qv_command ORDER BY position");
         q.executeStep();)
        commands.push_back(command_of_words(q.getColumn(0).getString(), q.getColumn(1).getDouble(),
                                            q.getColumn(2).getString(),
                                            q.getColumn(3).getInt() != 0));
    return commands;
}

}  // namespace

void Store::add_module(const std::string& name, const std::string& display) {
    with_file_name(impl_->path, [&] {
        impl_->begin();
        Statement insert(impl_->db, "INSERT OR IGNORE INTO qv_module(name, display) VALUES(?,?)");
        insert.bind(1, name);
        insert.bind(2, display);
        insert.exec();
    });
}

void Store::add_table(const std::string& module, const std::string& id) {
    with_file_name(impl_->path, [&] {
        Statement q(impl_->db, "SELECT module FROM qv_module WHERE name=?");
        q.bind(1, module);
        const std::int64_t key = q.executeStep() ? q.getColumn(0).getInt64() : 0;
        auto* table = impl_->find_table(id);
        if (!table) {
            impl_->add_table(key, id);
            return;
        }
        // A record of it came before, from a module that did not say the table is its own.
        if (table->module != 0) return;
        impl_->begin();
        table->module = key;
        Statement update(impl_->db, "UPDATE qv_table SET module=? WHERE tab=?");
        update.bind(1, key);
        update.bind(2, table->key);
        update.exec();
    });
}

void Store::set_layout(const std::string& id, const Layout& layout) {
    with_file_name(impl_->path, [&] {
        auto* table = impl_->find_table(id);
        impl_->set_layout(table ? *table : impl_->add_table(0, id), layout);
    });
}

void Store::set_reason(const std::string& id, const std::string& reason) {
    with_file_name(impl_->path, [&] {
        auto* table = impl_->find_table(id);
        if (!table) return;
        impl_->begin();
        table->reason = reason;
        Statement update(impl_->db, "UPDATE qv_table SET reason=? WHERE tab=?");
        update.bind(1, reason);
        update.bind(2, table->key);
        update.exec();
    });
}

void Store::add(const Record& record) {
    with_file_name(impl_->path, [&] { impl_->add(record); });
}

void Store::commit() {
    with_file_name(impl_->path, [&] { impl_->commit(); });
}

void Store::set_meta(const std::string& key, const std::string& value) {
    with_file_name(impl_->path, [&] {
        impl_->begin();
        Statement insert(impl_->db, "INSERT OR REPLACE INTO qv_meta VALUES(?,?)");
        insert.bind(1, key);
        insert.bind(2, value);
        insert.exec();
    });
}

std::string Store::meta(const std::string& key) const {
    return with_file_name(impl_->path, [&] {
        Statement q(impl_->db, "SELECT value FROM qv_meta WHERE key=?");
        q.bind(1, key);
        return q.executeStep() ? q.getColumn(0).getString() : std::string();
    });
}

std::map<std::string, std::string> Store::all_meta() const {
    return store::with_file_name(impl_->path, [&] {
        std::map<std::string, std::string> all;
        for (Statement q(impl_->db, "SELECT key, value FROM qv_meta"); q.executeStep();)
            all[q.getColumn(0).getString()] = q.getColumn(1).getString();
        return all;
    });
}

void Store::set_status(const std::string& incomplete_because) {
    set_meta("status", incomplete_because.empty() ? "complete" : "incomplete");
    set_meta("incomplete_because", incomplete_because);
}

std::string Store::status_text() const {
    const auto because = meta("incomplete_because");
    return meta("status") + (because.empty() ? "" : ": " + because);
}

void Store::set_facts(const std::vector<Fact>& facts) {
    with_file_name(impl_->path, [&] {
        impl_->begin();
        impl_->db.exec("DELETE FROM qv_fact");
        Statement insert(impl_->db, "INSERT INTO qv_fact(label, value, source) VALUES(?,?,?)");
        for (const auto& fact : facts) {
            insert.reset();
            insert.bind(1, fact.label);
            insert.bind(2, fact.value);
            insert.bind(3, fact.source);
            insert.exec();
        }
    });
}

std::vector<Fact> Store::facts() const {
    return with_file_name(impl_->path, [&] {
        std::vector<Fact> facts;
        for (Statement q(impl_->db, "SELECT label, value, source FROM qv_fact ORDER BY position");
             q.executeStep();)
            facts.push_back({q.getColumn(0).getString(), q.getColumn(1).getString(),
                             q.getColumn(2).getString()});
        return facts;
    });
}

void Store::set_commands(const std::vector<CommandInfo>& commands) {
    with_file_name(impl_->path, [&] {
        impl_->begin();
        impl_->db.exec("DELETE FROM qv_command");
        Statement insert(
            impl_->db,
            "INSERT INTO qv_command(lane, origin, command, tool, started, seconds, exit, "
            "signal, stopped_by, captures, stderr, remark) "
            "VALUES(?,?,?,?,?,?,?,?,?,?,?,?)");
        for (const auto& command : commands) {
            insert.reset();
            insert.clearBindings();
            insert.bind(1, command.lane);
            insert.bind(2, command.origin);
            insert.bind(3, command.text);
            insert.bind(4, command.tool);
            if (command.started) insert.bind(5, *command.started);
            if (command.seconds) insert.bind(6, *command.seconds);
            if (command.exit) insert.bind(7, *command.exit);
            if (command.signal) insert.bind(8, *command.signal);
            if (!command.stopped_by.empty()) insert.bind(9, command.stopped_by);
            insert.bind(10, boost::join(command.captures, kBetweenCaptures));
            insert.bind(11, command.standard_error);
            insert.bind(12, command.remark);
            insert.exec();
        }
    });
}

std::vector<CommandInfo> Store::commands() const {
    return with_file_name(impl_->path, [&] {
        const bool in_words =
            impl_->db
                .execAndGet(
                    "SELECT count(*) FROM pragma_table_info('qv_command') WHERE name='outcome'")
                .getInt() != 0;
        return in_words ? commands_in_words(impl_->db) : recorded_commands(impl_->db);
    });
}

std::vector<ModuleInfo> Store::modules() const {
    return with_file_name(impl_->path, [&] {
        std::map<std::string, std::string> titles;
        for (auto& table : declared_tables(*this)) titles.emplace(table.id, std::move(table.title));
        std::vector<ModuleInfo> modules;
        std::map<std::int64_t, std::size_t> place;
        for (Statement q(impl_->db, "SELECT module, name, display FROM qv_module ORDER BY module");
             q.executeStep();) {
            place[q.getColumn(0).getInt64()] = modules.size();
            modules.push_back({q.getColumn(1).getString(), q.getColumn(2).getString(), {}});
        }
        for (const auto& table : impl_->tables) {
            if (!place.contains(table->module)) {
                place[table->module] = modules.size();
                modules.emplace_back();
            }
            const auto records =
                impl_->db.execAndGet("SELECT count(*) FROM " + identifier(table->sql_name))
                    .getInt64();
            modules[place[table->module]].tables.push_back(
                {table->id, titles[table->id], table->layout, records, table->reason});
        }
        return modules;
    });
}

std::vector<PropertyInfo> Store::properties(const std::string& table) const {
    return with_file_name(impl_->path, [&] {
        if (impl_->transaction) impl_->save_run();
        std::vector<PropertyInfo> properties;
        const auto* known = impl_->find_table(table);
        if (!known) return properties;
        std::set<std::string> seen;
        Statement q(impl_->db,
                    "SELECT id, display FROM qv_shape "
                    "WHERE shape IN (SELECT shape FROM qv_run WHERE tab=?) "
                    "ORDER BY shape, position");
        q.bind(1, known->key);
        while (q.executeStep()) {
            const auto id = q.getColumn(0).getString();
            if (seen.insert(id).second) properties.push_back({id, q.getColumn(1).getString()});
        }
        return properties;
    });
}

}  // namespace qvhost
