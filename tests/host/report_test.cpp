#include "report/report_json.h"
#include "show/visible.h"

#include <sys/stat.h>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

#include "place.h"
#include "report/json_text.h"

using namespace qvhost;

namespace {

class Report : public test::Place {
protected:
    std::string path() const { return dir / "report.sqlite"; }
};

TEST_F(Report, AsItIsPromised) {
    {
        Store store(path(), Store::Mode::create);
        store.add_module("M", "A \"module\"");
        for (const char* table : {"ROWS", "COLUMNS", "NONE"}) store.add_table("M", table);
        store.set_layout("ROWS", RowLayout{{"a", "b"}, {60, 40}, false});
        store.set_layout("COLUMNS", ColumnLayout{{"a"}, 30, 1});
        store.add({"ROWS", "name", -1, {{"b", "B", "x\n"}, {"a", "A", 5}}});
        store.add(
            {"COLUMNS", "bytes", -1, {{"a", "A", std::string("\0\xff\xc3\xa4</script>", 13)}}});
        store.commit();
    }
    std::ostringstream out;
    write_report_json(Store(path(), Store::Mode::read), out);
    EXPECT_EQ(out.str(), R"({"format":1,
"collection":{"host":null,"machine_id":null,"os":null,"kernel":null,"uptime_seconds":null,"run_as":null,"started":null,"finished":null,"status":"incomplete","version":null},
"health":[],
"findings":[],
"inventory":{
"systems":[],
"processors":[],
"memory_modules":[],
"bmcs":[],
"sensors":[],
"power_supplies":[],
"frus":[],
"controllers":[],
"batteries":[],
"enclosures":[],
"volumes":[],
"drives":[],
"volume_members":[]},
"modules":[
{"name":"M","display":"A \"module\"","tables":[
{"id":"ROWS","layout":{"kind":"rows","headers":["a","b"],"widths":[60,40],"flag":false}},
{"id":"COLUMNS","layout":{"kind":"columns","headers":["a"],"width":30,"count":1}},
{"id":"NONE","layout":null}]}],
"records":[
{"table":"ROWS","name":"name","index":-1,"properties":[{"id":"b","display":"B","value":"x\n"},{"id":"a","display":"A","value":5}]},
{"table":"COLUMNS","name":"bytes","index":-1,"properties":[{"id":"a","display":"A","value":"\u0000)"
                         "\xef\xbf\xbd\xc3\xa4</script>"
                         R"("}]}
]}
)");
    EXPECT_TRUE(nlohmann::json::accept(out.str()));
}

// Every pair of bytes, alone and in a text. Nothing that is hidden stands in it.
TEST(JsonText, MeansWhatTheLibraryWrites) {
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const std::string pair{static_cast<char>(first), static_cast<char>(second)};
            for (const auto& text : {pair, "a" + pair + "\xc3\xa4z"}) {
                std::string json = "before";
                put_json_text(text, json);
                ASSERT_TRUE(json.starts_with("before"));
                const auto librarys = nlohmann::json(text).dump(
                    -1, ' ', false, nlohmann::json::error_handler_t::replace);
                ASSERT_EQ(nlohmann::json::parse(json.substr(6)), nlohmann::json::parse(librarys));
                ASSERT_EQ(visible(json), json);
                if (visible(librarys) == librarys) {
                    ASSERT_EQ(json, "before" + librarys);
                }
            }
        }
    }
    std::string empty;
    put_json_text("", empty);
    EXPECT_EQ(empty, R"("")");
}

TEST_F(Report, AnEmptyCollection) {
    { const Store store(path(), Store::Mode::create); }
    std::ostringstream out;
    write_report_json(Store(path(), Store::Mode::read), out);
    const auto report = nlohmann::json::parse(out.str());
    EXPECT_EQ(report["modules"], nlohmann::json::array());
    EXPECT_EQ(report["records"], nlohmann::json::array());
}

TEST_F(Report, TellsWhichCollectionItIs) {
    {
        Store store(path(), Store::Mode::create);
        for (const auto& [key, value] : std::map<std::string, std::string>{
                 {"host", "kp220"},
                 {"machine_id", std::string(32, 'a')},
                 {"os", "Some \"OS\" \xff 12"},
                 {"kernel", "5.14.21"},
                 {"uptime_seconds", "3241"},
                 {"run_as", "root"},
                 {"started", "2026-11-21T01:20:40Z"},
                 {"finished", "2026-11-21T01:21:40Z"},
                 {"qvhost", "1.2.3"},
                 {"limits", "of another view's interest"},
             })
            store.set_meta(key, value);
        store.set_status("");
        store.commit();
    }
    const auto collection = [&] {
        std::ostringstream out;
        write_report_json(Store(path(), Store::Mode::read), out);
        return nlohmann::ordered_json::parse(out.str())["collection"];
    };
    EXPECT_EQ(collection().dump(),
              R"({"host":"kp220","machine_id":"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa",)"
              "\"os\":\"Some \\\"OS\\\" \xef\xbf\xbd 12\","
              R"("kernel":"5.14.21","uptime_seconds":3241,"run_as":"root",)"
              R"("started":"2026-11-21T01:20:40Z","finished":"2026-11-21T01:21:40Z",)"
              R"("status":"complete","version":"1.2.3"})");
    for (const char* other : {"running", "incomplete", "incomplete: as older programs wrote it"}) {
        Store(path(), Store::Mode::update).set_meta("status", other);
        EXPECT_EQ(collection()["status"], "incomplete") << other;
    }
}

TEST_F(Report, TheFileIsThereWholeOrNotAtAll) {
    { const Store store(path(), Store::Mode::create); }
    const Store store(path(), Store::Mode::read);
    const auto file = dir / "report.json";
    std::ofstream(file) << "an older one";
    write_report_json(store, file.string());
    EXPECT_TRUE(nlohmann::json::accept(test::content(file)));
    struct stat info {};
    ASSERT_EQ(::stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600u);
    EXPECT_FALSE(std::filesystem::exists(file.string() + ".new"));
    EXPECT_THROW(write_report_json(store, (dir / "none" / "report.json").string()),
                 std::runtime_error);
}

}  // namespace
