#include "fleet/import_bundles.h"

#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <ostream>
#include <set>
#include <thread>

#include "files/failure.h"
#include "files/scratch_files.h"
#include "fleet/import.h"
#include "fleet/incoming_bundle.h"
#include "fleet/migrate.h"
#include "show/visible.h"

namespace qvhost::fleet {

namespace fs = std::filesystem;

namespace {

using std::chrono::steady_clock;
using Incoming = std::unique_ptr<IncomingBundle>;

constexpr std::size_t kMostWaiting = 64;  // read bundles, each of which has a file open
constexpr std::uintmax_t kMostWaitingBytes = std::uintmax_t{512} << 20;  // of their stores, on disk
constexpr std::size_t kMostInBatch = 64;                                 // in one transaction
constexpr std::size_t kLeastInBatch = 16;  // as long as more bundles are being read
constexpr int kMostConflicts = 20;         // of one batch
constexpr std::chrono::milliseconds kBetweenTries{200};

// The files that the names stand for.
std::vector<fs::path> files_of(const std::vector<fs::path>& names) {
    std::vector<fs::path> files;
    for (const auto& name : names) {
        std::error_code error;
        if (!fs::is_directory(name, error)) {
            files.push_back(name);
            continue;
        }
        std::vector<fs::path> inside;
        for (const auto& entry : fs::directory_iterator(name)) {
            const auto file = entry.path().filename().string();
            if (file.ends_with(".tar.zst") || file.ends_with(".zip"))
                inside.push_back(entry.path());
        }
        std::sort(inside.begin(), inside.end());
        files.insert(files.end(), inside.begin(), inside.end());
    }
    return files;
}

// Readers put what they have read, writers take it in batches.
class Queue {
public:
    explicit Queue(unsigned readers) : readers_(readers) {}

    // False: the import has ended.
    bool put(Incoming incoming) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] {
            return has_ended_ || waiting_.empty() ||
                   (waiting_.size() < kMostWaiting && waiting_bytes_ < kMostWaitingBytes);
        });
        if (has_ended_) return false;
        waiting_bytes_ += incoming->bytes();
        waiting_.push_back(std::move(incoming));
        changed_.notify_all();
        return true;
    }

    void reader_is_done() {
        const std::lock_guard lock(mutex_);
        --readers_;
        changed_.notify_all();
    }

    void end() {
        const std::lock_guard lock(mutex_);
        has_ended_ = true;
        changed_.notify_all();
    }

    // What is there once it is worth a batch, with no host twice and none that another writer has. Empty: nothing will
    // come any more.
    std::vector<Incoming> take() {
        std::unique_lock lock(mutex_);
        std::vector<Incoming> batch;
        changed_.wait(lock, [&] {
            if (has_ended_) return true;
            if (waiting_.size() < kLeastInBatch && waiting_bytes_ < kMostWaitingBytes &&
                readers_ > 0)
                return false;
            for (auto one = waiting_.begin(); one != waiting_.end();) {
                if (batch.size() < kMostInBatch && taken_.insert((*one)->identity().host).second) {
                    waiting_bytes_ -= (*one)->bytes();
                    batch.push_back(std::move(*one));
                    one = waiting_.erase(one);
                } else {
                    ++one;
                }
            }
            return !batch.empty() || (waiting_.empty() && readers_ == 0);
        });
        changed_.notify_all();
        return batch;
    }

    void done(const std::vector<Incoming>& batch) {
        const std::lock_guard lock(mutex_);
        for (const auto& one : batch) taken_.erase(one->identity().host);
        changed_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Incoming> waiting_;
    std::uintmax_t waiting_bytes_ = 0;
    std::set<std::int64_t> taken_;  // hosts whose runs are being stored
    unsigned readers_;
    bool has_ended_ = false;
};

class Importer {
public:
    Importer(const ImportOptions& options, std::ostream& out, std::ostream& err)
        : options_(options),
          out_(out),
          err_(err),
          files_(files_of(options.bundles)),
          jobs_(options.jobs > 0 ? options.jobs
                                 : std::max(1u, std::thread::hardware_concurrency())),
          queue_(jobs_) {}

    ImportSummary run() {
        const auto db = open_database(options_.place, true);
        prepare_schema(*db, true);
        const bool is_server = db->dialect() == Dialect::postgresql;
        {
            std::vector<std::jthread> threads;
            for (unsigned i = 0; i < jobs_; ++i) threads.emplace_back([this] { read(); });
            // A file has one writer, a server as many as there are readers.
            for (unsigned i = 1; is_server && i < jobs_; ++i)
                threads.emplace_back(
                    [this] { guarded([this] { write(*open_database(options_.place, false)); }); });
            guarded([&] { write(*db); });
        }
        if (failure_) std::rethrow_exception(failure_);
        return summary_;
    }

private:
    // The first failure ends the import.
    template <class Work>
    void guarded(Work work) {
        try {
            work();
        } catch (...) {
            const std::lock_guard lock(mutex_);
            if (!failure_) failure_ = std::current_exception();
            queue_.end();
        }
    }

    void read() {
        for (std::size_t at = 0; (at = next_++) < files_.size();) {
            try {
                if (!queue_.put(std::make_unique<IncomingBundle>(files_[at], stores_))) break;
            } catch (const std::exception& error) {
                skip(words_of(error));
            }
        }
        queue_.reader_is_done();
    }

    void write(Database& db) {
        for (;;) {
            const auto batch = queue_.take();
            if (batch.empty()) return;
            std::vector<const IncomingBundle*> bundles;
            for (const auto& one : batch) bundles.push_back(one.get());
            store(db, bundles);
            queue_.done(batch);
        }
    }

    // One bundle's fault is no other's: what cannot be stored together is stored one by one.
    void store(Database& db, const std::vector<const IncomingBundle*>& bundles) {
        try {
            const auto results = import_patiently(db, bundles);
            for (std::size_t i = 0; i < results.size(); ++i) tell(*bundles[i], results[i]);
        } catch (const LostConnection&) {
            throw;
        } catch (const std::exception& error) {
            if (bundles.size() == 1)
                return skip(bundles[0]->bundle().string() + ": " + words_of(error));
            for (const auto* one : bundles) store(db, {one});
        }
    }

    std::vector<Imported> import_patiently(Database& db,
                                           const std::vector<const IncomingBundle*>& bundles) {
        std::optional<steady_clock::time_point> lost;
        for (int conflicts = 0;;) {
            try {
                if (lost) db.reconnect();
                prepare_months(db, bundles);
                return import(db, bundles);
            } catch (const LostConnection& error) {
                const auto time = steady_clock::now();
                if (!lost) {
                    lost = time;
                    complain("the connection is lost, and tried anew: " +
                             std::string(error.what()));
                }
                if (time - *lost > options_.reconnect_timeout) throw;
                std::this_thread::sleep_for(kBetweenTries);
            } catch (const Conflict&) {
                if (++conflicts > kMostConflicts) throw;
                std::this_thread::sleep_for(kBetweenTries);
            }
        }
    }

    void tell(const IncomingBundle& incoming, const Imported& result) {
        const std::lock_guard lock(mutex_);
        ++(result.is_new ? summary_.imported : summary_.there_already);
        summary_.rows += result.rows;
        summary_.stored += result.stored;
        const auto bundle = incoming.bundle().string();
        if (!result.host.empty())
            out_ << one_line(bundle) << ": "
                 << one_line(incoming.name().empty() ? "" : incoming.name() + ", ")
                 << one_line(result.host) << '\n';
        if (result.is_other_bundle)
            err_ << "qvfleet: " << one_line(bundle)
                 << ": this run is there already, from another bundle, which stays\n";
    }

    void skip(const std::string& why) {
        {
            const std::lock_guard lock(mutex_);
            ++summary_.skipped;
        }
        complain(why + "; skipped");
    }

    void complain(const std::string& words) {
        const std::lock_guard lock(mutex_);
        err_ << "qvfleet: " << one_line(words) << '\n';
    }

    const ImportOptions& options_;
    std::ostream& out_;
    std::ostream& err_;
    std::vector<fs::path> files_;
    ScratchFiles stores_{"qvfleet"};  // of the bundles that are read
    unsigned jobs_;
    Queue queue_;
    std::atomic<std::size_t> next_ = 0;
    std::mutex mutex_;  // of what follows and the streams
    ImportSummary summary_;
    std::exception_ptr failure_;
};

}  // namespace

ImportSummary import_bundles(const ImportOptions& options, std::ostream& out, std::ostream& err) {
    // Counting SQLite's memory takes a lock that all threads would wait for. Refused where SQLite is in use already.
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    return Importer(options, out, err).run();
}

}  // namespace qvhost::fleet
