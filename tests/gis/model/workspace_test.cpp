// The record of input layers: the workspace and the input-layer list, byte
// for byte, for a run of opens.
#include "gis_test_util.hpp"

using namespace gistest;

namespace {

class Workspace : public GisTest {
protected:
    // Opens an input layer; the files are made first.
    int32_t openInput(const std::string& name, std::initializer_list<const char*> files) {
        for (const char* f : files) writeFile(path(f), "");
        return gisOpenLayer(path(name), false, "I ", "");
    }
    // The layer's full name as the records give it.
    std::string full(const char* name) const { return std::filesystem::canonical(dir_).string() + "/" + name; }
};

const std::string kWorkspaceHead = crlf({"!Workspace", "!Version 600", "!Charset WindowsLatin1",
                                         "!Contains GIS input layers from VARDEN simulation Sim 1"});
const std::string kListHead = crlf({"Version 300", "Charset \"WindowsLatin1\"", "Delimiter \",\"", "Columns 3",
                                    "  ID Integer", "  Open_ID Integer", "  Layer Char(254)", "Data", ""});

}  // namespace

TEST_F(Workspace, OneLineForEachNewInputLayer) {
    gisInitialiseLibrary(0, "  Sim 1 ", path("run"), path("run"));
    EXPECT_EQ(openInput("a.mif", {"a.mif", "a.mid"}), 1);
    EXPECT_EQ(openInput("a.mid", {}), 2);  // the same stem: no line
    EXPECT_EQ(openInput("b.shp", {"b.shp", "b.dbf"}), 3);
    EXPECT_EQ(openInput("c.mif", {"c.mif", "c.mid", "c.tab"}), 4);
    EXPECT_EQ(openInput("d", {"d.mif", "d.mid"}), 5);  // no extension: not ".mi..."
    int32_t again = 1;
    gisCloseLayer(again);
    EXPECT_EQ(openInput("a.mif", {}), 1);  // opened before, under another number
    gisCloseWorkspace();
    EXPECT_EQ(openInput("e.mif", {"e.mif", "e.mid"}), 6);  // after the close: no line

    EXPECT_EQ(readFile(path("run.wor")),
              kWorkspaceHead +
                  crlf({"! .mif/.mid Layer with no .tab Layer \"" + full("a.mif") + "\"",
                        "! Non-MapInfo .tab Layer \"" + full("b.shp") + "\"", "Open Table \"" + full("c.tab") + "\"",
                        "! Non-MapInfo .tab Layer \"" + full("d") + "\""}));
    EXPECT_EQ(readFile(path("run_input_layers.mif")), kListHead + crlf({"none", "none", "none", "none"}));
    EXPECT_EQ(readFile(path("run_input_layers.mid")),
              crlf({"    1,    1, \"" + full("a.mif") + "\"", "    2,    3, \"" + full("b.shp") + "\"",
                    "    3,    4, \"" + full("c.mif") + "\"", "    4,    5, \"" + full("d") + "\""}));
}
