#include "qvhost/finish/not_executable.h"

#include <elf.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <optional>
#include <string_view>
#include <system_error>

#include "files/descriptor.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kHeadBytes = 65536;  // enough for the headers of a program

std::string head_of(const fs::path& file, std::size_t most) {
    const Descriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    return opened ? read_bytes(opened.get(), most) : "";
}

template <class Part>
std::optional<Part> part_at(std::string_view bytes, std::size_t at) {
    Part part;
    if (at > bytes.size() || bytes.size() - at < sizeof part) return std::nullopt;
    std::memcpy(&part, bytes.data() + at, sizeof part);
    return part;
}

// The machine that a program is for; it stands at the same place for 32 and 64 bits.
std::optional<Elf64_Half> machine_of(std::string_view head) {
    return part_at<Elf64_Half>(head, offsetof(Elf64_Ehdr, e_machine));
}

// Besides its own programs a system may run those of its 32-bit predecessor.
bool runs_here(Elf64_Half machine, Elf64_Half own) {
    return machine == own || (own == EM_X86_64 && machine == EM_386) ||
           (own == EM_AARCH64 && machine == EM_ARM);
}

// The program that loads this one; empty: none is named.
template <class Header, class Segment>
std::string loader_of(std::string_view head) {
    const auto header = part_at<Header>(head, 0);
    if (!header) return "";
    for (std::size_t i = 0; i < header->e_phnum; ++i) {
        const auto segment = part_at<Segment>(head, header->e_phoff + i * header->e_phentsize);
        if (!segment) return "";
        if (segment->p_type != PT_INTERP || segment->p_offset >= head.size()) continue;
        const auto name = head.substr(segment->p_offset, segment->p_filesz);
        return std::string(name.substr(0, name.find('\0')));
    }
    return "";
}

std::string why_not_loadable(std::string_view head) {
    const auto machine = machine_of(head);
    const auto own = machine_of(head_of("/proc/self/exe", sizeof(Elf64_Ehdr)));
    if (!machine || head.size() < sizeof(Elf32_Ehdr)) return "it is cut off";
    if (own && !runs_here(*machine, *own)) return "it is a program for another kind of machine";
    const bool is_64 = head[EI_CLASS] == ELFCLASS64;
    const auto loader =
        is_64 ? loader_of<Elf64_Ehdr, Elf64_Phdr>(head) : loader_of<Elf32_Ehdr, Elf32_Phdr>(head);
    std::error_code ignored;
    if (!loader.empty() && !fs::exists(loader, ignored))
        return "it needs " + loader + ", which is not installed";
    return "";
}

// "#!/usr/bin/python3 -u"
std::string why_not_interpretable(std::string_view head) {
    auto line = head.substr(2, head.find('\n') - 2);
    const auto begin = line.find_first_not_of(" \t");
    if (begin == std::string_view::npos) return "";
    line.remove_prefix(begin);
    const std::string interpreter(line.substr(0, line.find_first_of(" \t\r")));
    const bool from_windows = line.find('\r') != std::string_view::npos;
    std::error_code ignored;
    if (from_windows && line.find_first_of(" \t") == std::string_view::npos)
        return "its first line ends with a carriage return";
    if (!fs::exists(interpreter, ignored))
        return "its interpreter " + interpreter + " is not installed";
    return "";
}

}  // namespace

std::string why_not_executable(const fs::path& file) {
    std::error_code error;
    const auto status = fs::status(file, error);
    if (fs::is_directory(status)) return "it is a directory";
    if (!fs::is_regular_file(status)) return "it is no file";
    if (::access(file.c_str(), X_OK) != 0) return "there is no right to run it";
    const auto head = head_of(file, kHeadBytes);
    const std::string_view bytes = head;
    if (bytes.empty())
        return fs::file_size(file, error) == 0 && !error ? "it is an empty file" : "";
    if (bytes.starts_with(ELFMAG)) return why_not_loadable(bytes);
    if (bytes.starts_with("#!")) return why_not_interpretable(bytes);
    // A shell runs what is no program as a script of its own, unless it holds bytes that no text has.
    if (bytes.substr(0, bytes.find('\n')).find('\0') != std::string_view::npos)
        return "it is no program";
    return "";
}

}  // namespace qvhost
