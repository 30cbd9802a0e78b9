// ipmitool without its list of enterprises says so in every run, before anything else, and the plug-in's
// "2>&1" makes a row of it:
//     IANA PEN registry open failed: No such file or directory
// The line goes to the log. All else passes as it comes, byte for byte and in its order.
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

#include "compat/chatter.h"
#include "compat/script_parts.h"
#include "compat/stand_in.h"
#include "files/descriptor.h"
#include "processes/processes.h"

namespace qvhost::compat {

std::string ipmitool_script(const Place& place) {
    if (found_in(place.search_path, "ipmitool").empty()) return "";
    return beginning(place) + unless_gone("ipmitool") + start_in_program(place, "ipmitool") +
           " \"$(command -v ipmitool)\" \"$@\"\n";
}

namespace {

bool is_same_file(int one, int other) {
    struct stat first {};
    struct stat second {};
    return ::fstat(one, &first) == 0 && ::fstat(other, &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

// Whether both write at one place in the same file, as after "2>&1": if one's place moves, so does the
// other's.
bool share_a_place(int one, int other) {
    const auto before = ::lseek(one, 0, SEEK_CUR);
    if (before < 0) return true;  // a pipe has no places
    if ((::fcntl(one, F_GETFL) & ::fcntl(other, F_GETFL) & O_APPEND) != 0) return true;
    ::lseek(one, before + 1, SEEK_SET);
    const bool moved = ::lseek(other, 0, SEEK_CUR) == before + 1;
    ::lseek(one, before, SEEK_SET);
    return moved;
}

// A pipe that the tool writes into, and where that goes.
class Stream {
public:
    explicit Stream(int to) : to_(to) {
        int ends[2] = {-1, -1};
        if (::pipe2(ends, O_CLOEXEC) != 0)
            throw std::system_error(errno, std::generic_category(), "pipe");
        reading_ = Descriptor(ends[0]);
        writing_ = Descriptor(ends[1]);
        ::fcntl(reading_.get(), F_SETFL, O_NONBLOCK);
    }

    int reading_end() const { return reading_.get(); }  // -1: the end has come
    int writing_end() const { return writing_.get(); }
    void close_writing_end() { writing_.close(); }

    // Passes on all that is there. At the end, or if nobody takes it any more, the stream closes: a tool
    // that goes on writing gets SIGPIPE, as it would have.
    void pass_on() {
        char block[16384];
        for (ssize_t size = 0; reading_;) {
            size = ::read(reading_.get(), block, sizeof block);
            if (size < 0 && errno == EINTR) continue;
            if (size < 0 && errno == EAGAIN) return;
            const auto text =
                size > 0 ? filter_.pass({block, static_cast<std::size_t>(size)}) : filter_.rest();
            if (!write_bytes(to_, text) || size <= 0) reading_.close();
        }
    }

    void end() {
        pass_on();
        write_bytes(to_, filter_.rest());
        reading_.close();
    }

    const std::string& taken() const { return filter_.taken(); }

private:
    int to_;
    Descriptor reading_;
    Descriptor writing_;
    ChatterFilter filter_;
};

void pass_on_until_end(std::vector<Stream>& streams, pid_t tool) {
    // What the tool leaves behind may hold its pipes open: its own end is what counts.
    const Descriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, tool, 0)));
    for (bool more = true; more;) {
        std::vector<pollfd> waiting{
            {handle.get(), POLLIN, 0}
        };
        for (const auto& stream : streams) waiting.push_back({stream.reading_end(), POLLIN, 0});
        if (::poll(waiting.data(), waiting.size(), -1) < 0 && errno != EINTR) break;
        more = waiting[0].revents == 0 && (handle || streams.front().reading_end() >= 0);
        for (auto& stream : streams) stream.pass_on();
    }
    for (auto& stream : streams) stream.end();
}

}  // namespace

int ipmitool_stand_in(const StandInArguments& given) {
    // Both streams through one pipe keep their order. If they overwrite each other in one file, messages go
    // first: the tool prints them at once, and answers when a buffer is full. A standard output that is a
    // file of its own stays as it is.
    const bool same_file = is_same_file(STDOUT_FILENO, STDERR_FILENO);
    const bool one_place = same_file && share_a_place(STDOUT_FILENO, STDERR_FILENO);

    std::vector<Stream> streams;
    pid_t tool = -1;
    try {
        streams.emplace_back(STDERR_FILENO);
        if (same_file && !one_place) streams.emplace_back(STDOUT_FILENO);
        std::vector<Start::Inherited> descriptors{
            {streams.front().writing_end(), STDERR_FILENO}
        };
        if (same_file) descriptors.push_back({streams.back().writing_end(), STDOUT_FILENO});
        tool = start_process({
            .program = given.arguments.at(0),
            .arguments = {given.arguments.begin() + 1, given.arguments.end()},
            .descriptors = descriptors,
        });
    } catch (const std::system_error&) {
        return start_instead(given.arguments);
    }
    for (auto& stream : streams) stream.close_writing_end();
    pass_on_until_end(streams, tool);
    const int status = wait_for_process(tool);
    for (const auto& stream : streams) {
        if (!stream.taken().empty()) note(given, "ipmitool: " + stream.taken());
    }
    return end_as(status);
}

}  // namespace qvhost::compat
