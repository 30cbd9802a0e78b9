#include "qvhost/present/open_page.h"

#include <cstdlib>
#include <iostream>

#include "bundle/archive_reader.h"
#include "files/temporary_directory.h"
#include "page/write_page.h"
#include "processes/processes.h"
#include "qvhost/present/bundle.h"
#include "qvhost/present/new_files.h"
#include "qvhost/present/open_report.h"
#include "show/visible.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

void show_in_browser(const fs::path& page) {
    const char* const browser = std::getenv("BROWSER");
    if (!browser || !*browser) return;
    wait_for_process(start_process({
        .program = "/bin/sh", .arguments = {"-c", "$BROWSER \"$1\"", "sh", page.string()}
    }));
}

}  // namespace

void open_page(const OpenOptions& options) {
    if (bundle::is_archive(options.report)) return open_bundle(options);
    const auto report = open_report(options.report);
    fs::path place;
    if (options.output.empty()) {
        TemporaryDirectory directory("qvhost-page");
        directory.keep();
        place = directory.path();
    } else {
        place = fs::absolute(options.output);
    }
    NewFiles files(place);
    for (const char* const name : {"assets", "data", "index.html"}) files.adopt(name);
    write_page(report.store, place, fs::is_directory(options.report) ? options.report : fs::path());
    files.keep();
    const auto page = files.path("index.html");
    std::cout << one_line(page.string()) << std::endl;
    show_in_browser(page);
}

}  // namespace qvhost
