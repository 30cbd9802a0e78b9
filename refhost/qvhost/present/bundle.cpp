#include "qvhost/present/bundle.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <stdexcept>
#include <system_error>

#include "bundle/read_bundle.h"
#include "bundle/summary_text.h"
#include "bundle/write_bundle.h"
#include "page/write_page.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/finish/runs.h"
#include "qvhost/present/open_report.h"
#include "qvhost/present/redaction.h"
#include "qvhost/present/unfinished.h"
#include "show/visible.h"
#include "text/size.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

// clang-format off
constexpr struct {
    std::string_view ending;
    bundle::Format format;
} kFormats[] = {
    {".tar.zst", bundle::Format::tar_zst},
    {".zip",     bundle::Format::zip},
};
// clang-format on

const auto* format_of(const fs::path& output) {
    const auto name = output.filename().string();
    const auto* const found =
        std::find_if(std::begin(kFormats), std::end(kFormats), [&](const auto& one) {
            return name.size() > one.ending.size() && name.ends_with(one.ending);
        });
    return found == std::end(kFormats) ? nullptr : found;
}

// What lies in the directory and is not of its latest run.
std::vector<bundle::LeftOut> others_in(const LogDir& dir, const std::vector<std::string>& names) {
    std::vector<bundle::LeftOut> others;
    for (const auto& entry : fs::directory_iterator(dir.path())) {
        const auto name = entry.path().filename().string();
        if (std::find(names.begin(), names.end(), name) != names.end()) continue;
        std::error_code none;
        const bool is_file = entry.symlink_status().type() == fs::file_type::regular;
        others.push_back(
            {name, LogDir::is_own(name) ? "it is of an earlier run" : "it is not of this run",
             is_file ? entry.file_size(none) : 0});
    }
    std::sort(others.begin(), others.end(),
              [](const auto& a, const auto& b) { return a.name < b.name; });
    return others;
}

std::string counted(std::size_t count, const char* one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

std::string size_of(const bundle::Manifest& manifest) {
    std::uint64_t bytes = 0;
    for (const auto& file : manifest.files) bytes += file.bytes;
    return counted(manifest.files.size(), "file") + ", " + size_text(bytes);
}

void tell_redacted(const bundle::Manifest& manifest) {
    if (!manifest.redacted.empty())
        std::cout << "replaced: " << one_line(manifest.redacted) << '\n';
}

void tell_left_out(const bundle::Manifest& manifest) {
    for (const auto& [name, reason, bytes] : manifest.left_out)
        std::cout << "left out: " << one_line(name) << ", " << size_text(bytes) << ": "
                  << one_line(reason) << '\n';
}

// What the sender's page does when it is opened nobody knows.
void make_page_anew(const LogDir& dir) {
    for (const char* const name : {"assets", "data", "index.html"})
        fs::remove_all(dir.report() / name);
    write_page(Store(dir.store(), Store::Mode::read), dir.report(), dir.path());
}

}  // namespace

std::string bundle_misuse(const BundleOptions& options) {
    if (auto misuse = redaction_misuse(options); !misuse.empty()) return misuse;
    if (options.review)
        return options.output.empty() ? "" : "--review makes no bundle: it takes no --output";
    if (options.output.empty()) return "--output is required";
    return format_of(options.output) ? "" : "--output names a file that ends with .tar.zst or .zip";
}

void make_bundle(const BundleOptions& options) {
    const LogDir dir(options.report);
    const auto report = open_with_captures(options.report, "a bundle is made of");
    std::error_code error;
    if (fs::exists(fs::symlink_status(options.output, error)))
        throw std::runtime_error(options.output.string() + ": exists already; it is not replaced");

    bundle::Order order;
    order.log_dir = options.report;
    order.names = files_of_latest_run(dir);
    order.left_out = others_in(dir, order.names);
    if (options.review) return Redaction(report.store, order, options).review(std::cout);
    order.output = options.output;
    order.format = format_of(options.output)->format;
    order.most_bytes = options.most_bytes;
    // A zip has local times, and those of two machines differ.
    ::setenv("TZ", "UTC0", 1);
    ::tzset();
    constexpr const char* kProgram = "qvhost " QV_VERSION;
    const auto manifest = options.redact.empty()
                              ? bundle::write_bundle(report.store, kProgram, order)
                              : Redaction(report.store, order, options).write_bundle(kProgram);
    std::cout << one_line(options.output.string()) << ": " << size_of(manifest) << ", packed in "
              << size_text(fs::file_size(options.output)) << '\n';
    tell_redacted(manifest);
    tell_left_out(manifest);
}

void verify_file(const fs::path& file) {
    const auto manifest = bundle::verify_bundle(file).manifest;
    std::cout << one_line(file.string()) << ": as its manifest says: " << size_of(manifest) << '\n';
    if (!manifest.host.empty()) std::cout << "host: " << one_line(manifest.host) << '\n';
    std::cout << "collected: "
              << one_line(manifest.finished.empty() ? "nobody knows when" : manifest.finished)
              << ", " << one_line(manifest.status) << "\nmade by: " << one_line(manifest.program)
              << '\n';
    tell_redacted(manifest);
    tell_left_out(manifest);
}

void open_bundle(const OpenOptions& options) {
    // The name of the directory is known when all is read.
    const auto known = bundle::verify_bundle(options.report);
    const auto& files = known.manifest.files;
    if (std::none_of(files.begin(), files.end(),
                     [](const auto& one) { return one.name == "report/report.sqlite"; }))
        throw std::runtime_error(options.report.string() + ": it holds no report");
    const auto place =
        fs::absolute(options.output.empty() ? fs::path(known.directory) : options.output);
    expect_free(place);
    Unfinished made(place);
    bundle::unpack_bundle(options.report, made.path());
    const LogDir dir(made.path());
    // Beside the report: a log directory holds nothing but that and what tools have printed.
    for (const auto* name :
         {bundle::kManifestName, bundle::kManifestDigestName, bundle::kSummaryName})
        fs::rename(dir.path() / name, dir.report() / name);
    make_page_anew(dir);
    made.become(place);
    std::cout << one_line(place.string()) << '\n';
}

}  // namespace qvhost
