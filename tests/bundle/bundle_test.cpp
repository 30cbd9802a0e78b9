// A report becomes a bundle and a report again; what is not as its manifest says is refused.
#include <fstream>
#include <random>
#include <sstream>

#include "bundle/archive_writer.h"
#include "bundle/digest.h"
#include "bundle/read_bundle.h"
#include "bundle/write_bundle.h"
#include "host/place.h"

namespace qvhost::bundle {

namespace {

namespace fs = std::filesystem;
using test::content;

void put(const fs::path& file, const std::string& text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

std::string noise(std::size_t bytes) {
    std::mt19937 random(7);
    std::string text(bytes, ' ');
    for (char& c : text) c = static_cast<char>(random());
    return text;
}

std::vector<std::string> files_below(const fs::path& directory) {
    std::vector<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        if (entry.is_regular_file()) files.push_back(fs::relative(entry.path(), directory));
    }
    std::sort(files.begin(), files.end());
    return files;
}

class BundleTest : public test::Place {
protected:
    BundleTest() : log_dir(dir / "log") {
        put(log_dir / "c0.txt", "Controller = 0\n");
        put(log_dir / "Firmware" / "small.bin", noise(20'000));
        put(log_dir / "large.bin", noise(50'000));
        put(log_dir / "qvhost.log", "line\n");
        put(log_dir / "report" / "report.json", "{}");
        Store store(log_dir / "report" / "report.sqlite", Store::Mode::create);
        store.set_meta("host", "web1/../x");
        store.set_meta("finished", "2026-11-21T01:20:40Z");
        store.set_meta("status", "complete");
        CommandInfo command;
        command.text = "storcli /c0 show >c0.txt";
        command.started = "2026-11-21T01:20:00Z";
        command.seconds = 2.5;
        command.exit = 3;
        command.captures = {"c0.txt"};
        store.set_commands({command});
        store.commit();
        order.log_dir = log_dir;
        order.names = {"Firmware", "c0.txt", "large.bin", "qvhost.log", "report", "none"};
        order.output = dir / "bundle.tar.zst";
    }

    Manifest write() const {
        return write_bundle(Store(log_dir / "report" / "report.sqlite", Store::Mode::read),
                            "qvhost 1.2.3", order);
    }

    static std::string refusal(const fs::path& file) {
        try {
            verify_bundle(file);
        } catch (const std::runtime_error& error) {
            const std::string said = error.what();
            EXPECT_TRUE(said.starts_with(file.string() + ": ")) << said;
            return said.substr(std::min(said.size(), file.string().size() + 2));
        }
        return "";
    }

    // A bundle as its sender wants it.
    fs::path sent(const std::vector<std::pair<std::string, std::string>>& files) {
        const auto file = dir / "sent.zip";
        std::ofstream out(file, std::ios::binary);
        ArchiveWriter archive(out, Format::zip, 0);
        for (const auto& [name, bytes] : files) {
            archive.begin("top/" + name, bytes.size());
            archive.write(bytes);
        }
        archive.close();
        return file;
    }

    fs::path log_dir;
    Order order;
};

const BundledFile* find(const Manifest& manifest, const std::string& name) {
    for (const auto& file : manifest.files) {
        if (file.name == name) return &file;
    }
    return nullptr;
}

std::string hash_of(const std::string& bytes) {
    Sha256 digest;
    digest.add(bytes);
    return digest.hex();
}

TEST(Sha256, IsThatOfTheStandard) {
    EXPECT_EQ(hash_of("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(hash_of(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST_F(BundleTest, IsTheReportAgain) {
    for (const auto format : {Format::tar_zst, Format::zip}) {
        order.format = format;
        order.output = dir / ("bundle" + std::to_string(static_cast<int>(format)));
        const auto written = write();
        EXPECT_EQ(fs::status(order.output).permissions(), fs::perms(0600));
        const auto bytes = content(order.output);
        fs::remove(order.output);
        write();
        EXPECT_EQ(content(order.output), bytes) << "the same report, the same bytes";

        const auto found = verify_bundle(order.output);
        EXPECT_EQ(found.manifest, written);
        EXPECT_EQ(found.directory, "qvhost-web1..x-20261121T012040Z");
        const auto unpacked = dir / ("unpacked" + std::to_string(static_cast<int>(format)));
        fs::create_directory(unpacked);
        EXPECT_EQ(unpack_bundle(order.output, unpacked).manifest, written);
        EXPECT_EQ(
            files_below(unpacked),
            (std::vector<std::string>{"Firmware/small.bin", "SUMMARY.txt", "c0.txt", "large.bin",
                                      "manifest.json", "manifest.sha256", "qvhost.log",
                                      "report/report.json", "report/report.sqlite"}));
        for (const auto& name : files_below(log_dir)) {
            EXPECT_EQ(content(unpacked / name), content(log_dir / name)) << name;
            EXPECT_EQ(fs::status(unpacked / name).permissions(), fs::perms(0600)) << name;
        }
        EXPECT_EQ(read_manifest(content(unpacked / "manifest.json")), written);
        const auto* capture = find(written, "c0.txt");
        ASSERT_TRUE(capture);
        EXPECT_EQ(*capture, (BundledFile{"c0.txt", 15, hash_of("Controller = 0\n"),
                                         "storcli /c0 show >c0.txt", "2026-11-21T01:20:00Z", 2.5,
                                         "exit code 3"}));
    }
}

TEST_F(BundleTest, LeavesOutTheLargestCapturesFirst) {
    order.most_bytes = 40'000;
    auto written = write();
    EXPECT_LE(fs::file_size(order.output), 40'000u);
    EXPECT_EQ(
        written.left_out,
        (std::vector<LeftOut>{{"large.bin", "the bundle would be larger than it may be", 50'000}}));
    EXPECT_FALSE(find(written, "large.bin"));
    EXPECT_TRUE(find(written, "Firmware/small.bin"));

    order.most_bytes = 10'000;
    written = write();
    EXPECT_LE(fs::file_size(order.output), 10'000u);
    EXPECT_EQ(written.left_out.size(), 2u);
    EXPECT_EQ(verify_bundle(order.output).manifest, written);

    fs::remove(order.output);
    order.most_bytes = 100;
    EXPECT_THROW(write(), std::runtime_error);
    EXPECT_FALSE(fs::exists(order.output));
}

TEST_F(BundleTest, LeavesOutWhatIsNoFile) {
    fs::create_symlink("/etc/passwd", log_dir / "Firmware" / "link");
    put(log_dir / "Firmware" / "\xc3\xa4", "x");
    const auto written = write();
    EXPECT_EQ(written.left_out,
              (std::vector<LeftOut>{{"Firmware/link", "it is no file", 0},
                                    {"Firmware/\xc3\xa4", "not every system takes its name", 1}}));
    EXPECT_FALSE(find(written, "Firmware/link"));
}

TEST_F(BundleTest, IsNotThereWhereItCannotBeWhole) {
    fs::permissions(log_dir / "c0.txt", fs::perms::none);
    if (::geteuid() != 0) {
        EXPECT_THROW(write(), std::system_error);
        EXPECT_FALSE(fs::exists(order.output));
    }
    order.output = dir / "none" / "bundle.zip";
    EXPECT_THROW(write(), std::system_error);
}

TEST_F(BundleTest, RefusesWhatIsNotAsItsManifestSays) {
    Manifest manifest{"qvhost 1.0.0"};
    manifest.files = {{"a", 3, hash_of("one")}, {"b", 3, hash_of("two")}};
    const auto text = json_of(manifest);
    const std::string name = kManifestName;
    const std::pair<std::string, std::string> digest{kManifestDigestName, digest_line(text)};
    EXPECT_EQ(refusal(sent({{name, text}, digest, {"a", "one"}, {"b", "two"}})), "");
    EXPECT_EQ(refusal(sent({{name, text}, digest, {"b", "two"}, {"a", "one"}})), "");
    EXPECT_EQ(refusal(sent({{name, text}, digest, {"a", "one"}})),
              "\"b\" is missing, which its manifest names");
    EXPECT_EQ(refusal(sent({{name, text}, digest, {"a", "one"}, {"b", "twO"}})),
              "\"b\" is not as its manifest says");
    EXPECT_EQ(refusal(sent({{name, text}, digest, {"a", "on"}, {"b", "two"}})),
              "\"a\" is not as its manifest says");
    EXPECT_EQ(refusal(sent({{name, text}, digest, {"a", "one!"}, {"b", "two"}})),
              "\"a\" is not as its manifest says");
    EXPECT_EQ(refusal(sent({{name, text}, digest, {"a", "one"}, {"b", "two"}, {"c", "three"}})),
              "\"c\" is in it, and its manifest does not say so");
    EXPECT_EQ(refusal(sent({{"a", "one"}, {name, text}, digest, {"b", "two"}})),
              "it is no bundle: it does not begin with a manifest");
    EXPECT_EQ(refusal(sent({})), "it is no bundle: it does not begin with a manifest");
    EXPECT_EQ(refusal(sent({{name, text}})), "it is no bundle: it does not begin with a manifest");
    EXPECT_EQ(refusal(sent({{name, text + " "}, digest, {"a", "one"}, {"b", "two"}})),
              "its manifest is not as its digest says");
    EXPECT_EQ(refusal(sent({{name, "{}"}, {kManifestDigestName, digest_line("{}")}})),
              "its manifest.json is none of a bundle");
    manifest.files.push_back(manifest.files.front());
    EXPECT_EQ(refusal(sent({{name, json_of(manifest)},
                            {kManifestDigestName, digest_line(json_of(manifest))},
                            {"a", "one"},
                            {"b", "two"}})),
              "its manifest names \"a\" twice");
}

// Whatever is changed in a bundle, it is refused or still the same.
TEST_F(BundleTest, SurvivesDamage) {
    const auto written = write();
    const auto bytes = content(order.output);
    std::mt19937 random(static_cast<unsigned>(test::first_random()));
    int refused = 0;
    for (int i = 0; i < 200; ++i) {
        auto damaged = bytes;
        damaged[random() % damaged.size()] = static_cast<char>(random());
        const auto file = dir / "damaged.tar.zst";
        std::ofstream(file, std::ios::binary | std::ios::trunc) << damaged;
        try {
            EXPECT_EQ(verify_bundle(file).manifest, written);
        } catch (const std::runtime_error&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 100);
}

}  // namespace

}  // namespace qvhost::bundle
