// /proc/cpuinfo: a block a hardware thread. On x86 it names its processor:
//     processor       : 0
//     model name      : Intel(R) Xeon(R) CPU E5-2630 v3 @ 2.40GHz
//     physical id     : 0
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
    Integer cores;
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
        auto& processor = processors_[thread_.physical.value_or(-1)];
        if (processor.place.line == 0) processor.place = reading_.at(thread_.line);
        if (thread_.physical) processor.socket = std::to_string(*thread_.physical);
        if (!processor.model) processor.model = thread_.model;
        if (!processor.cores) processor.cores = thread_.cores;
        processor.threads = processor.threads.value_or(0) + 1;
        thread_ = {};
    }

    Thread& now() { return thread_; }
    bool is_in_block() const { return thread_.line > 0; }
    Processor& all() { return processors_[-1]; }

    void end() {
        finish();
        for (auto& [physical, processor] : processors_)
            if (processor.place.line > 0)
                reading_.found.kernel_processors.push_back(std::move(processor));
    }

private:
    Reading& reading_;
    Thread thread_;
    std::map<std::int64_t, Processor> processors_;  // by physical id, -1 if none is told
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
        else if (pair->key == "cpu cores")
            threads.now().cores = integer(pair->value);
        else if (pair->key == "model name" || pair->key == "cpu" || pair->key == "Processor")
            threads.now().model = told(pair->value);
    });
    threads.end();
    if (reading.how.lines > 0 && !any) add_gap(reading, reading.how.lines, "no processor");
    if (!last_ended) add_gap(reading, reading.how.lines, "the capture ends in the middle");
}

}  // namespace qvhost::inventory
