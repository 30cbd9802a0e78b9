#include "fleet/incoming_bundle.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <stdexcept>
#include <system_error>
#include <unordered_map>

#include "bundle/digest.h"
#include "bundle/read_bundle.h"
#include "fleet/times.h"
#include "report/json_text.h"
#include "store/typed_table.h"
#include "store/typed_value.h"
#include "text/keyed_hash.h"

namespace qvhost::fleet {

namespace fs = std::filesystem;

namespace {

constexpr const char* kReport = "report/report.sqlite";

// Verifies the bundle, and writes its store.
bundle::Bundle take_report(const fs::path& bundle, const ScratchFile& file) {
    const auto written = file.open();
    return bundle::take_from_bundle(bundle, kReport, [&](std::string_view bytes) {
        errno = 0;
        if (!write_bytes(written.get(), bytes))
            throw std::system_error(errno, std::generic_category(), file.path().string());
    });
}

// As every database takes it: UTF-8 without NUL, which PostgreSQL has no text for.
std::string clean(std::string_view text) {
    auto cleaned = as_utf8(text);
    constexpr std::string_view kReplacement = "\xef\xbf\xbd";
    for (auto at = cleaned.find('\0'); at != std::string::npos; at = cleaned.find('\0', at))
        cleaned.replace(at, 1, kReplacement);
    return cleaned;
}

TypedValue known(const std::string& text) {
    return text.empty() ? TypedValue() : TypedValue(clean(text));
}

void make_fit(TypedValue& value) {
    if (auto* text = std::get_if<std::string>(&value)) {
        const auto is_plain = [](char c) {
            return c != '\0' && static_cast<unsigned char>(c) < 0x80;
        };
        if (!std::all_of(text->begin(), text->end(), is_plain)) *text = clean(*text);
    } else if (const auto* real = std::get_if<double>(&value); real && !std::isfinite(*real)) {
        value = std::monostate();
    }
}

template <class Number>
void append(std::string& bytes, Number number) {
    for (std::size_t i = 0; i < sizeof number; ++i)
        bytes += static_cast<char>(static_cast<std::uint64_t>(number) >> (8 * i) & 0xff);
}

// What a digest is made of. Values that are not known are left out, so that a column that comes to a table later
// changes no digest.
void append_value(std::string& bytes, const std::string& name, const TypedValue& value) {
    if (std::holds_alternative<std::monostate>(value)) return;
    bytes += name;
    bytes += '\0';
    bytes += static_cast<char>('0' + value.index());
    if (const auto* number = std::get_if<std::int64_t>(&value)) {
        append(bytes, *number);
    } else if (const auto* real = std::get_if<double>(&value)) {
        append(bytes, std::bit_cast<std::uint64_t>(*real));
    } else if (const auto* text = std::get_if<std::string>(&value)) {
        append(bytes, text->size());
        bytes += *text;
    }
}

// Rows are compared with those of the same host alone, so the key need not be secret. It never changes: digests are
// stored.
const KeyedHash kHash(KeyedHash::Key{0x71766672656574, 0x686f73747320});

std::int64_t signed_of(std::uint64_t number) { return std::bit_cast<std::int64_t>(number); }

// Gives equal rows of one table digests of their own.
class Digester {
public:
    explicit Digester(const History& history) : history_(history) {}

    std::int64_t of(const Row& row) {
        bytes_.clear();
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (static_cast<int>(i) != history_.place)
                append_value(bytes_, history_.names[i], row[i]);
        }
        const auto content = kHash(bytes_);
        const auto nth = ++seen_[content];
        if (nth == 1) return signed_of(content);
        append(bytes_, nth);
        return signed_of(kHash(bytes_));
    }

private:
    const History& history_;
    std::string bytes_;
    std::unordered_map<std::uint64_t, std::uint64_t> seen_;
};

std::size_t history_named(std::string_view name) {
    const auto& all = histories();
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (all[i].name == name) return i;
    }
    return all.size();
}

// The captures are what lies beside log and report.
bool is_capture(const bundle::BundledFile& file) {
    return !file.name.starts_with("report/") && file.name != "qvhost.log" &&
           file.name != "SUMMARY.txt";
}

std::int64_t stored_size(std::uint64_t number) {
    return number > static_cast<std::uint64_t>(kForever) ? kForever
                                                         : static_cast<std::int64_t>(number);
}

TypedValue number_known(const std::string& text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return {};
    return number;
}

// The system's serial number, as the report's first system has it.
std::string serial_in(const Store& store) {
    constexpr TypedColumn kSerial[] = {
        {"serial", ColumnType::text}
    };
    std::string serial;
    each_typed_row_while(store, "systems", kSerial, [&](const Row& row) {
        serial = text_of(row[0]);
        return serial.empty();
    });
    return clean(serial);
}

}  // namespace

HostIdentity identity_of(const std::string& machine_id, const std::string& serial) {
    if (machine_id.empty() && serial.empty())
        throw std::runtime_error(
            "it tells neither machine id nor serial number, and a host is not known by its name");
    bundle::Sha256 digest;
    digest.add(machine_id);
    digest.add(std::string_view("\0", 1));
    digest.add(serial);
    const auto hex = digest.hex();
    std::uint64_t number = 0;
    std::from_chars(hex.data(), hex.data() + 16, number, 16);
    // Not negative, which leaves negative keys for locks of other kinds.
    return {machine_id, serial, static_cast<std::int64_t>(number >> 1)};
}

IncomingBundle::IncomingBundle(const fs::path& bundle, ScratchFiles& files)
    : bundle_(bundle), file_(files) {
    const auto& file = file_.path();
    auto read = take_report(bundle, file_);
    manifest_sha256_ = std::move(read.manifest_sha256);
    const auto refuse = [&](const std::string& why) {
        throw std::runtime_error(bundle.string() + ": " + why);
    };
    const auto& all = read.manifest.files;
    const auto report =
        std::find_if(all.begin(), all.end(), [](const auto& one) { return one.name == kReport; });
    if (report == all.end()) refuse("it holds no report");
    bytes_ = report->bytes;
    file_.cut(bytes_);
    for (auto& one : read.manifest.files) {
        if (is_capture(one)) captures_.push_back(std::move(one));
    }
    try {
        store_ = std::make_unique<Store>(file, Store::Mode::read);
        const auto started = time_of(store_->meta("started"));
        if (!started) throw std::runtime_error("it does not tell when it was collected");
        run_ = *started;
        name_ = clean(store_->meta("host"));
        identity_ = identity_of(clean(store_->meta("machine_id")), serial_in(*store_));
        read_digests();
    } catch (const std::runtime_error& error) {
        // Errors of the store name the copy of it.
        std::string why = error.what();
        if (why.starts_with(file.string() + ": ")) why.erase(0, file.string().size() + 2);
        refuse(why);
    }
}

Row IncomingBundle::run_row() const {
    const auto told = [&](const char* key) { return known(store_->meta(key)); };
    return {identity_.host,
            run_,
            utc_text(run_),
            told("finished"),
            told("status"),
            told("incomplete_because"),
            known(name_),
            told("os"),
            told("kernel"),
            number_known(store_->meta("uptime_seconds")),
            told("run_as"),
            told("qvhost"),
            clean(bundle_.filename().string()),
            manifest_sha256_};
}

void IncomingBundle::read_digests() {
    digests_.resize(histories().size());
    for (std::size_t i = 0; i < digests_.size(); ++i) {
        Digester digester(histories()[i]);
        each_row(i, [&](const Row& row) { digests_[i].push_back(digester.of(row)); });
    }
}

void IncomingBundle::each_row(std::size_t history, const TakeRow& take) const {
    if (history == kCaptures) {
        for (const auto& one : captures_)
            take({clean(one.name), stored_size(one.bytes), clean(one.sha256)});
        return;
    }
    const auto& of = histories()[history];
    const bool is_reference = of.name == "finding_entities";
    Row fit;
    each_typed_row(*store_, of.name.c_str(), of.told, [&](const Row& row) {
        fit = row;
        for (auto& value : fit) make_fit(value);
        if (is_reference) {
            // The number of a row of the table that the column before names.
            const auto* kind = std::get_if<std::string>(&fit[1]);
            const auto* number = std::get_if<std::int64_t>(&fit[2]);
            const auto table = kind ? history_named(*kind) : histories().size();
            const bool is_known = number && table < histories().size() && *number > 0 &&
                                  static_cast<std::uint64_t>(*number) <= digests_[table].size();
            fit[2] = is_known ? TypedValue(digests_[table][static_cast<std::size_t>(*number - 1)])
                              : TypedValue();
        }
        take(fit);
    });
}

}  // namespace qvhost::fleet
