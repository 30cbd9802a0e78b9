#include "qvhost/present/redaction.h"

#include <algorithm>
#include <cstddef>
#include <future>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "bundle/archive_reader.h"
#include "files/new_file.h"
#include "page/write_page.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/present/unfinished.h"
#include "redact/map_file.h"
#include "redact/read_back.h"
#include "redact/store_cells.h"
#include "redact/store_copy.h"
#include "redact/text_file.h"
#include "report/report_json.h"
#include "show/visible.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

constexpr const char* kStore = "report/report.sqlite";

// Made anew, from the redacted store and captures.
bool is_made_anew(const std::string& name) {
    return name == kStore || name == "report/report.json" || name == "report/index.html" ||
           name.starts_with("report/assets/") || name.starts_with("report/data/");
}

// The JSON of the program itself, in which records and captures are texts.
std::optional<redact::JsonNumbers> json_in(const std::string& name) {
    using redact::JsonNumbers;
    if (name == bundle::kManifestName || name == "report/report.json")
        return JsonNumbers(JsonNumbers::Written::json);
    if (name.starts_with("report/data/")) return JsonNumbers(JsonNumbers::Written::script);
    return std::nullopt;
}

// "qvhost-web1" of "qvhost-web1-20261121T012040Z": a day is no serial number.
std::string without_time(const std::string& directory) {
    constexpr std::string_view kTime = "-20261121T012040Z";
    const auto end = directory.size() - std::min(directory.size(), kTime.size());
    const auto time = std::string_view(directory).substr(end);
    const bool is_time =
        time.size() == kTime.size() && time[0] == '-' && time[9] == 'T' && time.back() == 'Z';
    return directory.substr(0, is_time ? end : directory.size());
}

}  // namespace

std::string redaction_misuse(const BundleOptions& options) {
    if (options.redact.empty())
        return options.map.empty() && !options.review ? ""
                                                      : "--map and --review belong to --redact";
    if (redact::classes_of(options.redact).empty())
        return "--redact: " + options.redact +
               " is none of serials, network, users, secrets and all";
    if (!options.map.empty() && options.map == options.output)
        return "--map and --output are two files";
    return "";
}

Redaction::Redaction(const Store& store, bundle::Order order, const BundleOptions& options)
    : store_(store),
      order_(std::move(order)),
      map_(options.map),
      classes_(redact::classes_of(options.redact)),
      values_(redact::words_of_reports(store)) {
    if (!map_.empty()) {
        redact::expect_map_outside(map_, order_.log_dir, "the report");
        substitutes_ = redact::read_map(map_);
    }
    order_.redacted = redact::text_of(classes_);
    auto contents = bundle::contents_of(order_.log_dir, order_.names);
    order_.left_out.insert(order_.left_out.end(), contents.left_out.begin(),
                           contents.left_out.end());
    redact::Values of_store = values_;
    auto store_is_read =
        std::async(std::launch::async, [&] { return redact::gather_from_store(store_, of_store); });
    gather_from_files(contents.files);
    tables_ = store_is_read.get();
    values_.add(of_store);
    for (const auto& one : order_.left_out) redact::gather_from_text(one.name, values_);
    substitutes_.assign(values_);
}

void Redaction::gather_from_files(const std::vector<bundle::Source>& sources) {
    for (const auto& source : sources) {
        redact::gather_from_text(source.name, values_);
        if (is_made_anew(source.name)) continue;
        const auto file = order_.log_dir / source.name;
        if (const auto reason = redact::why_not_redacted(file); !reason.empty()) {
            order_.left_out.push_back({source.name, reason, source.bytes});
            continue;
        }
        const auto told = values_.told_by_fields();
        redact::gather_from_file(file, values_);
        files_.push_back({source.name, values_.told_by_fields() > told
                                           ? redact::Look::fields_too
                                           : redact::Look::spellings_alone});
    }
}

void Redaction::review(std::ostream& out) const {
    constexpr std::size_t kExamples = 5;
    for (const auto& row : redact::kClasses) {
        if (!classes_.has(row.which)) continue;
        std::vector<std::pair<std::size_t, std::string>> lines;
        std::size_t places = 0;
        for (const auto& [value, use] : values_.all()) {
            if (!use.classes.has(row.which) || !substitutes_.has(value)) continue;
            places += use.times;
            lines.emplace_back(use.times, *use.spelled.begin() + " -> " + substitutes_.of(value) +
                                              (use.is_searched ? "" : ", in its own fields alone"));
        }
        out << row.name << " (" << row.meaning << "): " << lines.size()
            << (lines.size() == 1 ? " value, seen " : " values, seen ") << places
            << (places == 1 ? " time" : " times") << '\n';
        std::sort(lines.begin(), lines.end(), [](const auto& a, const auto& b) {
            return std::pair(b.first, a.second) < std::pair(a.first, b.second);
        });
        for (std::size_t i = 0; i < lines.size() && i < kExamples; ++i)
            out << "  " << one_line(lines[i].second) << " (" << lines[i].first << ")\n";
        if (lines.size() > kExamples) out << "  and " << lines.size() - kExamples << " more\n";
    }
}

void Redaction::redact_files(const fs::path& directory, const redact::Redactor& redactor) const {
    for (const auto& [name, look] : files_) {
        const auto place = directory / redactor.text(name);
        fs::path above = directory;
        for (const auto& part : place.parent_path().lexically_relative(directory)) {
            above /= part;
            if (!fs::exists(above)) make_private_directory(above);
        }
        redact::redact_file(order_.log_dir / name, place, redactor, look);
    }
}

// Two things are made at a time.
void Redaction::make_report(const fs::path& directory, const redact::Redactor& redactor) const {
    const LogDir dir(directory);
    make_private_directory(directory);
    make_private_directory(dir.report());
    auto store_is_copied = std::async(
        std::launch::async, [&] { redact::copy_redacted(store_, dir.store(), redactor, tables_); });
    redact_files(directory, redactor);
    store_is_copied.get();
    auto json_is_written = std::async(std::launch::async, [&] {
        NewFile json(dir.json());  // nobody waits for the disk: the bundle alone is kept
        write_report_json(Store(dir.store(), Store::Mode::read), json);
        json.close();
    });
    const Store store(dir.store(), Store::Mode::read);
    // The same report and map give the same page.
    redact::Noise noise(substitutes_.key(), "nonce of the page " + store.meta("finished"));
    std::string nonce;
    constexpr std::size_t kDigits = 20;
    while (nonce.size() < kDigits) nonce += std::to_string(noise.below(10));
    write_page(store, dir.report(), dir.path(), {}, nonce);
    json_is_written.get();
}

void Redaction::read_back(const fs::path& file, const fs::path& store,
                          const redact::Redactor& redactor) const {
    redact::ReadBack read(redactor.search()), read_store(redactor.search());
    bundle::each_file(file, {}, [&](const bundle::ArchivedFile& one) -> bundle::TakeBytes {
        if (one.name == kStore) {
            read_store.begin(one.name);
            return [&](std::string_view bytes) { read_store.add(bytes); };
        }
        read.begin(without_time(one.directory) + '/' + one.name, json_in(one.name));
        // The program's own script and style, the same in every report.
        if (one.name.starts_with("report/assets/")) return [](std::string_view) {};
        return [&](std::string_view bytes) { read.add(bytes); };
    });
    read.end();
    read_store.end();
    auto found_in = read.found_in();
    if (found_in.empty() && !read_store.found_in().empty() &&
        redact::has_value_in_cells(store, redactor.search()))
        found_in = kStore;
    if (!found_in.empty())
        throw std::runtime_error(order_.output.string() + ": there is no bundle: in \"" + found_in +
                                 "\" of it stood a value that should have been replaced");
}

bundle::Manifest Redaction::write_bundle(const std::string& program) const {
    const redact::Redactor redactor(classes_, values_, substitutes_);
    const Unfinished staging(order_.output);
    auto order = order_;
    order.log_dir = staging.path() / "log";
    order.output = staging.path() / order_.output.filename();
    make_report(order.log_dir, redactor);
    order.names.clear();
    for (const auto& entry : fs::directory_iterator(order.log_dir))
        order.names.push_back(entry.path().filename().string());
    for (auto& [name, reason, bytes] : order.left_out) name = redactor.text(name);
    std::sort(order.left_out.begin(), order.left_out.end(),
              [](const auto& a, const auto& b) { return a.name < b.name; });
    const Store store(LogDir(order.log_dir).store(), Store::Mode::read);
    auto manifest = bundle::write_bundle(store, program, order);
    read_back(order.output, LogDir(order.log_dir).store(), redactor);
    if (!map_.empty()) redact::write_map(map_, substitutes_);
    fs::rename(order.output, order_.output);
    return manifest;
}

}  // namespace qvhost
