#include <unistd.h>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <pqxx/pqxx>
#include <pqxx/stream_to>

#include "fleet/database.h"

namespace qvhost::fleet {
namespace {
// A row in the text form of COPY, escaped already.
struct CopyLine {
    std::string text;
};
}  // namespace
}  // namespace qvhost::fleet

// The library's stream takes tuples, whose size is known when this is compiled. So a row is a tuple of one field, which
// the stream leaves as it is.
template <>
inline std::string pqxx::internal::TypedCopyEscaper::operator()(
    const qvhost::fleet::CopyLine* line) const {
    return line->text;
}

namespace qvhost::fleet {

namespace {

constexpr std::size_t kFetched = 1000;  // rows at a time

// Types of columns, as the server numbers them.
enum : unsigned {
    kBool = 16,
    kInt8 = 20,
    kInt2 = 21,
    kInt4 = 23,
    kFloat4 = 700,
    kFloat8 = 701,
    kNumeric = 1700
};

std::string real_text(double number) {
    if (std::isnan(number)) return "NaN";
    if (std::isinf(number)) return number < 0 ? "-Infinity" : "Infinity";
    char text[32];
    const auto end = std::to_chars(std::begin(text), std::end(text), number).ptr;
    return {text, end};
}

// As the server reads it; nothing is NULL.
std::optional<std::string> server_text(const TypedValue& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
    if (const auto* real = std::get_if<double>(&value)) return real_text(*real);
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    return std::nullopt;
}

// As COPY reads it.
void put_field(const TypedValue& value, std::string& line) {
    const auto text = server_text(value);
    if (!text) {
        line += "\\N";
        return;
    }
    constexpr std::string_view kEscaped = "\\\t\n\r";
    constexpr std::string_view kLetters = "\\tnr";
    for (const char c : *text) {
        const auto at = kEscaped.find(c);
        if (at != std::string_view::npos) line += '\\';
        line += at == std::string_view::npos ? c : kLetters[at];
    }
}

template <class Number>
std::optional<Number> number_in(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

TypedValue value_of(const pqxx::field& field) {
    if (field.is_null()) return {};
    const std::string_view text(field.c_str(), field.size());
    switch (field.type()) {
        case kBool: return std::int64_t{text == "t" ? 1 : 0};
        case kInt2:
        case kInt4:
        case kInt8:
        case kNumeric:  // a sum of integers is one
            if (const auto number = number_in<std::int64_t>(text)) return *number;
            [[fallthrough]];
        case kFloat4:
        case kFloat8:
            if (text == "NaN") return {};  // as SQLite has it
            if (text.ends_with("Infinity"))
                return text.front() == '-' ? -std::numeric_limits<double>::infinity()
                                           : std::numeric_limits<double>::infinity();
            if (const auto number = number_in<double>(text)) return *number;
            return std::string(text);
        default: return std::string(text);
    }
}

void take_rows(const pqxx::result& result, const TakeRow& take) {
    Row row;
    for (const auto& each : result) {
        row.clear();
        for (const auto& field : each) row.push_back(value_of(field));
        take(row);
    }
}

// The server's words have a line of their own for the place in the statement.
std::string trimmed_words(std::string words) {
    while (!words.empty() && words.back() == '\n') words.pop_back();
    return words;
}

class PostgresqlDatabase;

class Copy : public Insertion {
public:
    Copy(PostgresqlDatabase& db, const std::string& table, const std::vector<std::string>& columns);
    void add(const Row& row) override;
    void finish() override;

private:
    PostgresqlDatabase& db_;
    std::optional<pqxx::stream_to> stream_;
    std::tuple<CopyLine> line_;
};

class PostgresqlDatabase : public Database {
public:
    explicit PostgresqlDatabase(std::string url) : url_(std::move(url)) { reconnect(); }

    Dialect dialect() const override { return Dialect::postgresql; }

    void reconnect() override {
        transaction_.reset();
        connection_.reset();
        prepared_.clear();
        try {
            connection_.emplace(url_);
            pqxx::nontransaction settings(*connection_);
            settings.exec("SET client_min_messages = warning");
        } catch (const pqxx::failure& failure) {
            connection_.reset();
            throw LostConnection(trimmed_words(failure.what()));
        }
    }

    void begin() override {
        guarded([&] { transaction_.emplace(*connection_); });
    }
    void commit() override {
        guarded([&] { transaction_->commit(); });
        transaction_.reset();
    }
    void roll_back() noexcept override {
        try {
            transaction_.reset();
        } catch (const std::exception&) {
            // The connection is gone, and the server has rolled back.
        }
    }

    void lock(const std::vector<std::int64_t>& keys) override {
        for (const auto key : keys)
            each("SELECT pg_advisory_xact_lock($1)", {key}, [](const Row&) {});
    }

    void execute(const std::string& sql) override {
        if (transaction_) return guarded([&] { transaction_->exec(sql); });
        begin();
        execute(sql);
        commit();
    }

    void each(const std::string& sql, const Row& values, const TakeRow& take) override {
        if (!transaction_) {
            begin();
            each(sql, values, take);
            return commit();
        }
        std::vector<std::optional<std::string>> texts;
        std::vector<const char*> places;
        for (const auto& value : values) texts.push_back(server_text(value));
        for (const auto& text : texts) places.push_back(text ? text->c_str() : nullptr);
        const auto result = guarded([&] {
            auto& name = prepared_[sql];
            if (name.empty()) {
                name = "qvfleet_" + std::to_string(prepared_.size());
                connection_->prepare(name, sql);
            }
            return transaction_->exec_prepared(
                name, pqxx::prepare::make_dynamic_params(places.begin(), places.end()));
        });
        take_rows(result, take);
    }

    std::unique_ptr<Insertion> insertion(const std::string& table,
                                         const std::vector<std::string>& columns) override {
        return std::make_unique<Copy>(*this, table, columns);
    }

    void query(const std::string& sql,
               const std::function<void(const std::vector<std::string>& names)>& columns,
               const TakeRow& take) override {
        guarded([&] {
            pqxx::read_transaction reading(*connection_);
            // The extended protocol takes one statement alone.
            reading.exec_params("DECLARE qvfleet_rows NO SCROLL CURSOR FOR " + sql);
            for (bool is_first = true;; is_first = false) {
                const auto rows =
                    reading.exec("FETCH " + std::to_string(kFetched) + " FROM qvfleet_rows");
                std::vector<std::string> names;
                for (pqxx::row::size_type i = 0; is_first && i < rows.columns(); ++i)
                    names.emplace_back(rows.column_name(i));
                if (is_first) columns(names);
                take_rows(rows, take);
                if (rows.size() < static_cast<pqxx::result::size_type>(kFetched)) break;
            }
        });
    }

    bool has(const std::string& relation) override {
        bool is_there = false;
        each("SELECT to_regclass($1) IS NOT NULL", {relation},
             [&](const Row& row) { is_there = row[0] == TypedValue(std::int64_t{1}); });
        return is_there;
    }

    pqxx::work& transaction() { return *transaction_; }

    // What the library throws, as this program tells failures apart.
    template <class Work>
    auto guarded(Work work) -> decltype(work()) {
        if (!connection_) throw LostConnection("no connection to the server");
        try {
            return work();
        } catch (const pqxx::broken_connection& failure) {
            throw LostConnection(trimmed_words(failure.what()));
        } catch (const pqxx::in_doubt_error& failure) {
            throw LostConnection(trimmed_words(failure.what()));
        } catch (const pqxx::transaction_rollback& failure) {
            throw Conflict(trimmed_words(failure.what()));
        } catch (const pqxx::failure& failure) {
            const auto words = trimmed_words(failure.what());
            if (!is_alive()) throw LostConnection(words);
            throw std::runtime_error(words);
        }
    }

private:
    // A server that is stopped says so before it closes the connection.
    bool is_alive() const { return connection_ && connection_->is_open(); }

    std::string url_;
    std::optional<pqxx::connection> connection_;
    std::optional<pqxx::work> transaction_;
    std::map<std::string, std::string> prepared_;  // by their SQL
};

Copy::Copy(PostgresqlDatabase& db, const std::string& table,
           const std::vector<std::string>& columns)
    : db_(db) {
    db_.guarded([&] { stream_.emplace(db_.transaction(), table, columns); });
}

void Copy::add(const Row& row) {
    auto& line = std::get<0>(line_).text;
    line.clear();
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (i > 0) line += '\t';
        put_field(row[i], line);
    }
    db_.guarded([&] { *stream_ << line_; });
}

void Copy::finish() {
    db_.guarded([&] { stream_->complete(); });
}

}  // namespace

std::unique_ptr<Database> open_postgresql(const std::string& url) {
    try {
        return std::make_unique<PostgresqlDatabase>(url);
    } catch (const LostConnection& failure) {
        throw std::runtime_error(failure.what());
    }
}

}  // namespace qvhost::fleet
