// /proc/cpuinfo: a block a hardware thread. On x86 it names its processor:
//     processor       : 0
//     model name      : Intel(R) Xeon(R) CPU E5-2630 v3 @ 2.40GHz
//     physical id     : 0
//     siblings        : 16
//     core id         : 0
//     cpu cores       : 8
// Elsewhere it does not, and all threads count as one processor's. POWER, SPARC, s390x:
//     cpu             : POWER9 (architected), altivec supported
//     ncpus active    : 24
//     # processors    : 4
#include <algorithm>
#include <map>
#include <string>

#include "inventory/each_line.h"
#include "inventory/ipmi/aside.h"
#include "inventory/system/readers.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

struct Thread {
    std::int64_t line = 0;
    Integer physical;
    Integer cores, siblings;
    Text model;
};

class Threads {
public:
    explicit Threads(Reading& reading) : reading_(reading) {}

    void begin(std::int64_t line) {
        finish();
        thread_.line = line;
    }

    void finish() {
        if (thread_.line == 0) return;
        const auto physical = thread_.physical.value_or(-1);
        auto& processor = processors_[physical];
        if (processor.place.line == 0) processor.place = reading_.at(thread_.line);
        if (thread_.physical) processor.socket = std::to_string(*thread_.physical);
        if (!processor.model) processor.model = thread_.model;
        if (!processor.cores) processor.cores = thread_.cores;
        ++threads_[physical];
        if (!processor.threads) processor.threads = thread_.siblings;
        thread_ = {};
    }

    void cut_off() { is_cut_ = true; }

    Thread& now() { return thread_; }
    bool is_in_block() const { return thread_.line > 0; }
    Processor& all() { return processors_[-1]; }

    void end() {
        // A block that lacks what the others have is the last one of a capture that was cut off.
        if (is_in_block() && !thread_.physical && !processors_.empty() &&
            !processors_.contains(-1)) {
            thread_ = {};
            if (!is_cut_) add_gap(reading_, reading_.how.lines, "a thread that is cut off");
            is_cut_ = true;
        }
        finish();
        for (auto& [physical, processor] : processors_) {
            if (processor.place.line == 0) continue;
            const auto counted = threads_[physical];
            if (!processor.threads && counted > 0 && !is_cut_) processor.threads = counted;
            if (processor.threads.value_or(0) > counted && counted > 0 && !is_cut_)
                add_gap(reading_, reading_.how.lines,
                        std::to_string(*processor.threads) + " threads announced, " +
                            std::to_string(counted) + " read");
            reading_.found.kernel_processors.push_back(std::move(processor));
        }
    }

private:
    Reading& reading_;
    Thread thread_;
    std::map<std::int64_t, Processor> processors_;  // by physical id, -1 if none is told
    std::map<std::int64_t, std::int64_t> threads_;  // that were read of each
    bool is_cut_ = false;
};

// A key that stands once for the whole machine.
bool read_of_machine(const KeyValue& pair, std::int64_t line, Reading& reading, Threads& threads) {
    const bool counts = pair.key == "ncpus active" || pair.key == "# processors";
    if (!counts && pair.key != "cpu") return false;
    auto& processor = threads.all();
    if (processor.place.line == 0) processor.place = reading.at(line);
    if (counts)
        processor.threads = integer(pair.value);
    else if (!processor.model)
        processor.model = told(pair.value);
    return true;
}

}  // namespace

void read_cpuinfo(CaptureLines& lines, Reading& reading) {
    Threads threads(reading);
    bool any = false, last_ended = true;
    each_line(lines, reading, [&](const CaptureLine& line) {
        last_ended = line.ended;
        const auto pair = key_value(line.text, ":");
        if (!pair || is_tool_error(line.text)) {
            read_aside(line, reading);
            return;
        }
        any = true;
        if (!line.ended) return;  // its value may be cut off
        if (pair->key == "processor" && integer(pair->value))
            threads.begin(line.number);
        else if (!threads.is_in_block())
            read_of_machine(*pair, line.number, reading, threads);
        else if (pair->key == "physical id")
            threads.now().physical = integer(pair->value);
        else if (pair->key == "siblings")
            threads.now().siblings = integer(pair->value);
        else if (pair->key == "cpu cores")
            threads.now().cores = integer(pair->value);
        else if (pair->key == "model name" || pair->key == "cpu" || pair->key == "Processor")
            threads.now().model = told(pair->value);
    });
    if (!last_ended) threads.cut_off();
    threads.end();
    if (reading.how.lines > 0 && !any) add_gap(reading, reading.how.lines, "no processor");
    if (!last_ended) add_gap(reading, reading.how.lines, "the capture ends in the middle");
}

}  // namespace qvhost::inventory
