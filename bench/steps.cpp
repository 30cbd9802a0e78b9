// Single steps of a collection, each as a process of its own, for comparison with other programs.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

#include "journal/journal.h"
#include "kinds.h"
#include "report/report_json.h"
#include "repository/sink.h"
#include "store/store.h"

namespace {

using bench::Kind;
using marlox::repository::RRepository;

const Kind& kind_named(const std::string& name) {
    for (const Kind& kind : bench::kinds()) {
        if (kind.name == name) return kind;
    }
    throw std::runtime_error("no capture of the kind " + name);
}

// From capture to records.
void parse(const Kind& kind) {
    const auto counted = bench::count(kind);
    std::printf("%llu %llu\n", static_cast<unsigned long long>(counted.records),
                static_cast<unsigned long long>(counted.properties));
}

struct JournalSink : RRepository::Impl {
    explicit JournalSink(const std::string& path) : journal(path) {}
    void add(const qvhost::Record& record) override { journal.append(record); }
    qvhost::JournalWriter journal;
};

void write_journal(const Kind& kind, const std::string& path) {
    JournalSink sink(path);
    RRepository repository(sink);
    kind.parse(repository);
}

void read_journal(qvhost::JournalReader& journal, qvhost::Store& store) {
    const auto take = [&](const qvhost::JournalEntry& entry) {
        store.add(std::get<qvhost::Record>(entry));
    };
    while (journal.read(take) > 0) {
    }
}

// From capture to finished store, by way of the journal, as a collection does it: one process reads
// the capture while another fills the store.
void fill_store(const Kind& kind, const std::string& path) {
    const auto journal_path = path + ".journal";
    qvhost::Store store(path, qvhost::Store::Mode::create);
    const pid_t child = ::fork();
    if (child < 0) throw std::runtime_error("cannot fork");
    if (child == 0) {
        write_journal(kind, journal_path);
        ::_exit(0);
    }
    qvhost::JournalReader journal(journal_path);
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        read_journal(journal, store);
        ::usleep(1000);
    }
    read_journal(journal, store);
    if (status != 0) throw std::runtime_error("the reading process failed");
    ::unlink(journal_path.c_str());
}

int run(int argc, char** argv) {
    const std::string step = argc > 1 ? argv[1] : "";
    if (step == "parse" && argc == 4) {
        bench::read_captures_in(argv[3]);
        parse(kind_named(argv[2]));
    } else if (step == "journal" && argc == 5) {
        bench::read_captures_in(argv[3]);
        write_journal(kind_named(argv[2]), argv[4]);
    } else if (step == "fill" && argc == 4) {
        qvhost::Store store(argv[3], qvhost::Store::Mode::create);
        qvhost::JournalReader journal(argv[2]);
        read_journal(journal, store);
    } else if (step == "store" && argc == 5) {
        bench::read_captures_in(argv[3]);
        fill_store(kind_named(argv[2]), argv[4]);
    } else if (step == "report" && argc == 4) {
        qvhost::write_report_json(qvhost::Store(argv[2], qvhost::Store::Mode::read), argv[3]);
    } else {
        std::fprintf(stderr,
                     "usage: steps parse KIND CAPTURES\n"
                     "       steps journal KIND CAPTURES JOURNAL\n"
                     "       steps fill JOURNAL STORE\n"
                     "       steps store KIND CAPTURES STORE\n"
                     "       steps report STORE JSON\n");
        return 2;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "steps: %s\n", error.what());
        return 1;
    }
}
