// The library reset and the record of input layers: the workspace and the
// input-layer list, byte for byte, for a run of opens.
#include <algorithm>
#include <vector>

#include "gis_test_util.hpp"

using namespace gistest;

namespace {

class Workspace : public GisTest {
protected:
    void TearDown() override {
        gisCloseWorkspace();
        gisWorkspaceUnit = gisInputLayersMifUnit = gisInputLayersMidUnit = 0;
        gisLogUnit = 0;
    }
    // Opens an input layer with the console captured; the files are made first.
    int32_t openInput(const std::string& name, std::initializer_list<const char*> files) {
        for (const char* f : files) writeFile(path(f), "");
        ::testing::internal::CaptureStdout();
        const int32_t id = gisOpenLayer(path(name), false, "I ", "");
        conFlush();
        console_ += ::testing::internal::GetCapturedStdout();
        return id;
    }
    void initialise(const std::string& workspace, const std::string& list) {
        ::testing::internal::CaptureStdout();
        gisInitialiseLibrary(0, "  Sim 1 ", workspace.empty() ? "" : path(workspace), list.empty() ? "" : path(list));
        conFlush();
        console_ += ::testing::internal::GetCapturedStdout();
    }
    void closeWorkspace() {
        ::testing::internal::CaptureStdout();
        gisCloseWorkspace();
        conFlush();
        console_ += ::testing::internal::GetCapturedStdout();
    }
    std::string full() const { return std::filesystem::canonical(dir_).string() + "/"; }
    std::vector<std::string> files() const {
        std::vector<std::string> r;
        for (const auto& e : std::filesystem::directory_iterator(dir_)) r.push_back(e.path().filename().string());
        std::sort(r.begin(), r.end());
        return r;
    }
    std::string console_;
};

int count(const std::string& s, const std::string& part) {
    int n = 0;
    for (std::size_t p = s.find(part); p != std::string::npos; p = s.find(part, p + 1)) ++n;
    return n;
}

const std::string kWorkspaceHead = crlf({"!Workspace", "!Version 600", "!Charset WindowsLatin1",
                                         "!Contains GIS input layers from VARDEN simulation Sim 1"});
const std::string kListHead = crlf({"Version 300", "Charset \"WindowsLatin1\"", "Delimiter \",\"", "Columns 3",
                                    "  ID Integer", "  Open_ID Integer", "  Layer Char(254)", "Data", ""});

}  // namespace

TEST_F(Workspace, OneLineForEachNewInputLayer) {
    initialise("run", "run");
    const std::string d = full();
    EXPECT_EQ(openInput("a.mif", {"a.mif", "a.mid"}), 1);
    EXPECT_EQ(openInput("a.mid", {}), 2);  // the same stem: no line
    EXPECT_EQ(openInput("b.shp", {"b.shp", "b.dbf"}), 3);
    EXPECT_EQ(openInput("c.mif", {"c.mif", "c.mid", "c.tab"}), 4);
    EXPECT_EQ(openInput("d", {"d.mif", "d.mid"}), 5);  // no extension: not ".mi..."
    int32_t again = 1;
    gisCloseLayer(again);
    EXPECT_EQ(openInput("a.mif", {}), 1);  // opened before, under another number
    closeWorkspace();
    EXPECT_EQ(openInput("e.mif", {"e.mif", "e.mid"}), 6);  // after the close: no line

    EXPECT_EQ(readFile(path("run.wor")),
              kWorkspaceHead + crlf({"! .mif/.mid Layer with no .tab Layer \"" + d + "a.mif\"",
                                     "! Non-MapInfo .tab Layer \"" + d + "b.shp\"",
                                     "Open Table \"" + d + "c.tab\"",
                                     "! Non-MapInfo .tab Layer \"" + d + "d\""}));
    EXPECT_EQ(readFile(path("run_input_layers.mif")), kListHead + crlf({"none", "none", "none", "none"}));
    EXPECT_EQ(readFile(path("run_input_layers.mid")),
              crlf({"    1,    1, \"" + d + "a.mif\"", "    2,    3, \"" + d + "b.shp\"",
                    "    3,    4, \"" + d + "c.mif\"", "    4,    5, \"" + d + "d\""}));
    EXPECT_EQ(gisInputLayerCount, 5);
    EXPECT_EQ(gisWorkspaceUnit, 0);
    EXPECT_EQ(gisInputLayersMifUnit, 0);
    EXPECT_EQ(gisInputLayersMidUnit, 0);
}

TEST_F(Workspace, EachRecordFileOnlyWhenNamed) {
    struct Case {
        const char* workspace;
        const char* list;
        std::vector<std::string> files;
        int32_t workspaceUnit, listUnit;
    } cases[] = {
        {"", "only", {"only_input_layers.mid", "only_input_layers.mif", "x.mid", "x.mif"}, -1, 1},
        {"only", "", {"only.wor", "x.mid", "x.mif"}, 1, -1},
        {"", "", {"x.mid", "x.mif"}, -1, -1},
    };
    for (const Case& c : cases) {
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_);
        initialise(c.workspace, c.list);
        EXPECT_EQ(gisWorkspaceUnit > 0 ? 1 : gisWorkspaceUnit, c.workspaceUnit) << c.workspace;
        EXPECT_EQ(gisInputLayersMifUnit > 0 ? 1 : gisInputLayersMifUnit, c.listUnit) << c.list;
        EXPECT_EQ(gisInputLayersMidUnit > 0 ? 1 : gisInputLayersMidUnit, c.listUnit) << c.list;
        int32_t id = openInput("x.mif", {"x.mif", "x.mid"});
        gisCloseLayer(id);
        closeWorkspace();
        EXPECT_EQ(files(), c.files) << c.workspace << "/" << c.list;
        if (*c.list != '\0') {
            EXPECT_EQ(readFile(path("only_input_layers.mif")), kListHead + crlf({"none"}));
            EXPECT_EQ(readFile(path("only_input_layers.mid")), crlf({"    1,    1, \"" + full() + "x.mif\""}));
        }
        if (*c.workspace != '\0') {
            EXPECT_EQ(readFile(path("only.wor")),
                      kWorkspaceHead + crlf({"! .mif/.mid Layer with no .tab Layer \"" + full() + "x.mif\""}));
        }
    }
}

TEST_F(Workspace, EmptyListAndTrackingLimit) {
    initialise("", "empty");
    closeWorkspace();
    EXPECT_EQ(readFile(path("empty_input_layers.mif")), kListHead);
    EXPECT_EQ(readFile(path("empty_input_layers.mid")), "");

    // With 999 layers tracked, every further new layer is number 1000 in the
    // list and gets no workspace line.
    initialise("full", "full");
    gisInputLayerCount = 999;
    EXPECT_EQ(openInput("p.mif", {"p.mif", "p.mid"}), 1);
    EXPECT_EQ(openInput("q.mif", {"q.mif", "q.mid"}), 2);
    closeWorkspace();
    EXPECT_EQ(readFile(path("full.wor")), kWorkspaceHead);
    EXPECT_EQ(readFile(path("full_input_layers.mid")),
              crlf({" 1000,    1, \"" + full() + "p.mif\"", " 1000,    2, \"" + full() + "q.mif\""}));
    EXPECT_EQ(gisInputIndex[1], 1000);
    EXPECT_EQ(gisInputIndex[2], 1000);
    EXPECT_EQ(count(console_, "WARNING 0317 - Exceeded limit of input GIS layers"), 2);
}

TEST_F(Workspace, InitialiseResetsTheLibrary) {
    int32_t id = openWithHeader("out.mif");
    gisProjectionCheckIsError = gisSaveDateCheck = gisSaveDateCheckIsError = true;
    put(gisMifProjection, "x");
    put(gisRecordLine, "1,2");
    put(gisMessageLine[3], "old");
    gisInputIndex[id] = 7;
    gisInputLayerCount = 4;
    put(gisInputLayers[4], "stale");
    initialise("", "");
    EXPECT_FALSE(gisIsOpen[id]);
    EXPECT_EQ(gisFormat[id], 0);
    EXPECT_EQ(gisInputIndex[id], 0);
    EXPECT_TRUE(gisLayerName[id].blank());
    EXPECT_FALSE(gisProjectionCheckIsError || gisSaveDateCheck || gisSaveDateCheckIsError);
    EXPECT_TRUE(gisMifProjection.blank() && gisRecordLine.blank() && gisMessageLine[3].blank());
    EXPECT_EQ(gisInputLayerCount, 0);
    EXPECT_TRUE(gisInputLayers[4].blank());
    // The slot is free again.
    EXPECT_EQ(openWithHeader("out2.mif"), id);
}
