// Archives that somebody else made: nothing in them leads out, twice, or on without end.
#include <archive.h>
#include <archive_entry.h>
#include <sys/stat.h>

#include <fstream>
#include <map>
#include <sstream>

#include "bundle/archive_reader.h"
#include "bundle/archive_writer.h"
#include "host/place.h"

namespace qvhost::bundle {

namespace {

namespace fs = std::filesystem;

// An entry as anybody may write it.
struct Entry {
    std::string name;
    std::string bytes = "text";
    mode_t type = AE_IFREG;
    std::string link = {};  // a symbolic link's
    std::string hardlink = {};
};

class Archive : public test::Place {
protected:
    fs::path made(const std::vector<Entry>& entries, Format format = Format::tar_zst) {
        auto file = dir / ("archive" + std::to_string(++files_));
        auto* const archive = archive_write_new();
        if (format == Format::zip) {
            archive_write_set_format_zip(archive);
        } else {
            archive_write_set_format_pax_restricted(archive);
            archive_write_add_filter_zstd(archive);
        }
        EXPECT_EQ(archive_write_open_filename(archive, file.c_str()), ARCHIVE_OK);
        for (const auto& [name, bytes, type, link, hardlink] : entries) {
            auto* const entry = archive_entry_new();
            archive_entry_set_pathname(entry, name.c_str());
            archive_entry_set_filetype(entry, type);
            archive_entry_set_perm(entry, 0644);
            if (!link.empty()) archive_entry_set_symlink(entry, link.c_str());
            if (!hardlink.empty()) archive_entry_set_hardlink(entry, hardlink.c_str());
            const bool has_bytes = type == AE_IFREG && hardlink.empty();
            archive_entry_set_size(entry, has_bytes ? static_cast<la_int64_t>(bytes.size()) : 0);
            EXPECT_LE(ARCHIVE_WARN, archive_write_header(archive, entry)) << name;
            if (has_bytes) archive_write_data(archive, bytes.data(), bytes.size());
            archive_entry_free(entry);
        }
        EXPECT_EQ(archive_write_close(archive), ARCHIVE_OK);
        archive_write_free(archive);
        return file;
    }

    using Files = std::map<std::string, std::string>;
    static Files read(const fs::path& file, const Limits& limits = {}) {
        Files files;
        each_file(file, limits, [&](const ArchivedFile& one) -> TakeBytes {
            auto& bytes = files[one.directory + "|" + one.name];
            return [&bytes](std::string_view more) { bytes += more; };
        });
        return files;
    }

    // What is said of it; "": it is read.
    static std::string refusal(const fs::path& file, const Limits& limits = {}) {
        try {
            read(file, limits);
        } catch (const std::runtime_error& error) {
            const std::string said = error.what();
            EXPECT_TRUE(said.starts_with(file.string() + ": ")) << said;
            return said.substr(std::min(said.size(), file.string().size() + 2));
        }
        return "";
    }

    int files_ = 0;
};

TEST(Paths, ThatStayBelowTheirDirectoryArePlain) {
    for (const auto* name : {"a", "a/b", "a b/c.txt", "a/..b", "...", "C:", "-x"})
        EXPECT_TRUE(is_plain_path(name)) << name;
    std::string deep = "a";
    for (int i = 0; i < 16; ++i) deep += "/a";
    for (const auto& name :
         {std::string(), std::string("/"), std::string("/a"), std::string("a/"),
          std::string("a//b"), std::string("."), std::string(".."), std::string("a/../b"),
          std::string("a/."), std::string("a\\b"), std::string("a\nb"), std::string("a\0b", 3),
          std::string("\xc3\xa4"), std::string("\x1b[31m"), std::string(256, 'a'), deep})
        EXPECT_FALSE(is_plain_path(name)) << name;
    EXPECT_TRUE(is_plain_path(std::string(255, 'a')));
    EXPECT_TRUE(is_plain_path(deep.substr(2)));
}

TEST_F(Archive, IsReadAsItWasWritten) {
    for (const auto format : {Format::tar_zst, Format::zip}) {
        std::string large(200'000, 'x');
        for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * i >> 5);
        const auto write = [&](const char* name) {
            std::ofstream out(dir / name, std::ios::binary);
            ArchiveWriter writer(out, format, 1'000'000'000);
            for (const auto& [file, bytes] :
                 Files{{"top/a", "one"}, {"top/b c/d.e", large}, {"top/empty", ""}}) {
                writer.begin(file, bytes.size());
                writer.write(std::string_view(bytes).substr(0, bytes.size() / 3));
                writer.write(std::string_view(bytes).substr(bytes.size() / 3));
            }
            writer.close();
            return test::content(dir / name);
        };
        const auto bytes = write("first");
        EXPECT_EQ(bytes, write("second"));
        EXPECT_TRUE(is_archive(dir / "first"));
        EXPECT_EQ(read(dir / "first"),
                  (Files{{"top|a", "one"}, {"top|b c/d.e", large}, {"top|empty", ""}}));
        // Cut off anywhere it is damaged, or lacks its end; never more than that.
        for (std::size_t size = 0; size < bytes.size(); size += bytes.size() / 37) {
            std::ofstream(dir / "cut", std::ios::binary) << bytes.substr(0, size);
            try {
                for (const auto& [name, part] : read(dir / "cut"))
                    EXPECT_TRUE(name == "top|a" || name == "top|empty" || large.starts_with(part));
            } catch (const std::runtime_error&) {
            }
        }
    }
}

TEST_F(Archive, RefusesWhatIsNoFileOfItsDirectory) {
    const std::string no_file = " in it is no file", no_name = " in it is no name for a file";
    const struct {
        Entry entry;
        std::string said;
    } kRows[] = {
        {{"top/link", "", AE_IFLNK, "/etc/passwd"}, "\"top/link\"" + no_file},
        {{"top/link", "", AE_IFLNK, "a"}, "\"top/link\"" + no_file},
        {{"top/hard", "", AE_IFREG, "", "top/a"}, "\"top/hard\"" + no_file},
        {{"top/device", "", AE_IFCHR}, "\"top/device\"" + no_file},
        {{"top/disk", "", AE_IFBLK}, "\"top/disk\"" + no_file},
        {{"top/pipe", "", AE_IFIFO}, "\"top/pipe\"" + no_file},
        {{"top/../../out"}, "\"top/../../out\"" + no_name},
        {{"../out"}, "\"../out\"" + no_name},
        {{"/etc/cron.d/out"}, "\"/etc/cron.d/out\"" + no_name},
        {{"top//b"}, "\"top//b\"" + no_name},
        {{"top/./b"}, "\"top/./b\"" + no_name},
        {{"top/b\nc"}, "\"top/b\nc\"" + no_name},
        {{"top/b\\..\\c"}, "\"top/b\\..\\c\"" + no_name},
        {{"other/b"}, "its files are not in one directory"},
        {{"b"}, "its files are not in one directory"},
        {{"top"}, "\"top\" is in no directory"},
        {{"top/a"}, "\"top/a\" is in it twice"},
        {{"top/a/b"}, "\"a\" is in it twice"},
    };
    for (const auto& [entry, said] : kRows) {
        auto wanted = said;
        if (entry.name == "top/a") wanted = "\"a\" is in it twice";
        EXPECT_EQ(refusal(made({{"top/a"}, entry})), wanted) << entry.name;
    }
    // The directory first: a file may not take its place.
    EXPECT_EQ(refusal(made({{"top/a/b"}, {"top/a"}})), "\"a\" is in it twice");
    // Directories of their own are nothing; what is in a zip is judged alike.
    EXPECT_EQ(read(made({{"top/", "", AE_IFDIR}, {"top/x/", "", AE_IFDIR}, {"top/x/a"}})),
              (Files{{"top|x/a", "text"}}));
    EXPECT_EQ(refusal(made({{"top/a"}, {"../out"}}, Format::zip)), "\"../out\"" + no_name);
    EXPECT_EQ(refusal(made({{"top/a"}, {"top/l", "", AE_IFLNK, "/etc"}}, Format::zip)),
              "\"top/l\"" + no_file);
    EXPECT_EQ(refusal(made({{"top/a"}, {"top/a"}}, Format::zip)), "\"a\" is in it twice");
}

TEST_F(Archive, RefusesMoreThanTheLimits) {
    const std::vector<Entry> entries{{"top/a", std::string(1000, 'a')},
                                     {"top/b", std::string(1000, 'b')}};
    for (const auto format : {Format::tar_zst, Format::zip}) {
        const auto file = made(entries, format);
        Limits limits;
        limits.bytes = 2000;
        limits.files = 2;
        EXPECT_EQ(refusal(file, limits), "");
        limits.bytes = 1999;
        EXPECT_EQ(refusal(file, limits), "what is in it has more than 1999 bytes");
        limits = {};
        limits.files = 1;
        EXPECT_EQ(refusal(file, limits), "it holds more than 1 files");
    }
    // A little that unpacks to much.
    const auto bomb = made({{"top/zeros", std::string(8 << 20, '\0')}});
    ASSERT_LT(fs::file_size(bomb), 4096u);
    Limits limits;
    limits.free_bytes = 1 << 20;
    limits.ratio = 100;
    const auto most = std::max<std::uint64_t>(1 << 20, 100 * fs::file_size(bomb));
    EXPECT_EQ(refusal(bomb, limits),
              "what is in it has more than " + std::to_string(most) + " bytes");
    limits.ratio = 100'000;
    EXPECT_EQ(refusal(bomb, limits), "");
}

TEST_F(Archive, RefusesWhatIsNone) {
    const auto put = [&](const std::string& bytes) {
        std::ofstream(dir / "file", std::ios::binary) << bytes;
        return dir / "file";
    };
    for (const auto& bytes :
         {std::string(), std::string("text"), std::string(100'000, '\0'), std::string("PK\3\4"),
          std::string("\x28\xb5\x2f\xfd"), std::string("SQLite format 3\0", 16)})
        EXPECT_FALSE(refusal(put(bytes)).empty() && bytes.size() > 100'000) << bytes;
    EXPECT_FALSE(is_archive(put("text")));
    EXPECT_FALSE(is_archive(dir));
    EXPECT_FALSE(is_archive(dir / "none"));
    ASSERT_EQ(::mkfifo((dir / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(is_archive(dir / "pipe"));
    EXPECT_EQ(refusal(dir / "pipe"), "no regular file");
    EXPECT_EQ(refusal(dir / "none"), "No such file or directory");
}

}  // namespace

}  // namespace qvhost::bundle
