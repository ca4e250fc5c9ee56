#include "framework/plugInMgr/pimDeclaration.h"
#include "framework/plugInMgr/pimEx.h"
#include "resmgt/osSharedLib.h"
#include "tests/support/declaredLibrary.h"
#include "tests/support/temporaryFolder.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

std::string const good = "name=blur\nversion=1.2\ntype=op\ninterface=framework 8.0\n";

std::string repeated(std::string const& text, int times) {
    std::string result;
    for (int index = 0; index < times; ++index)
        result += text;
    return result;
}

TEST(PimDeclaration, IsReadWithAllItsLines) {
    PimDeclaration const declaration = PimDeclaration::parse(
        declarationOf("colour=unknown\ntype=op\n\nname=Weichzeichner für Höfe\nversion=1.2-beta=3\n"
                      "interface=framework 8.0\nrequires=lut.op\ninterface=my host 12.345\nrequires=a.b.gen") +
        std::string(20, '\0'));
    EXPECT_EQ("Weichzeichner für Höfe", declaration.name);
    EXPECT_EQ("1.2-beta=3", declaration.version);
    EXPECT_EQ("op", declaration.type);
    EXPECT_EQ((Vector<LiString>{"lut.op", "a.b.gen"}), declaration.required);
    ASSERT_EQ(2u, declaration.interfaces.size());
    EXPECT_EQ("framework 8.0", declaration.interfaces[0].getText());
    EXPECT_EQ("my host 12.345", declaration.interfaces[1].getText());
}

TEST(PimDeclaration, SaysWhatIsWrongWithIt) {
    struct Row {
        std::string section;
        char const* problem;
    };
    for (Row const& row :
        {Row{"", "does not begin with KOPLUGIN"}, Row{"KOPLUGON" + good, "does not begin with KOPLUGIN"},
            Row{"KOPLUGIN\1\0", "is cut off"}, Row{std::string("KOPLUGIN\xFF\xFF\xFF\xFFname=x", 18), "is cut off"},
            Row{declarationOf(good).substr(0, good.size() + 11), "is cut off"},
            Row{declarationOf(good) + declarationOf(good), "is followed by another one: a library is one plug-in"},
            Row{declarationOf(good + "colour=\xFF\n"), "is not a text in UTF-8"},
            Row{declarationOf(good + "colour=\x1B[31m\n"), "is not a text in UTF-8"},
            Row{declarationOf(good + "colour=\xC2\x9B\n"), "is not a text in UTF-8"},
            Row{declarationOf(good + std::string("colour=a\0b\n", 11)), "is not a text in UTF-8"},
            Row{declarationOf(good + "colour\n"), "has a line without an equality sign"},
            Row{declarationOf(good + "colour=\n"), "has a value of 0 bytes"},
            Row{declarationOf(good + "colour=" + std::string(257, 'x')), "has a value of 257 bytes"},
            Row{declarationOf(""), "has no line \"name\""},
            Row{declarationOf("name=x\ntype=op\n"), "has no line \"version\""},
            Row{declarationOf("name=x\ntype=op\nversion=1"), "has no line \"interface\""},
            Row{declarationOf(good + "type=gen\n"), "has two lines \"type\""},
            Row{declarationOf(good + repeated("interface=framework 8.0\n", 16)), "names too many interfaces"},
            Row{declarationOf(good + repeated("requires=x\n", 65)), "requires too many plug-ins"},
            Row{declarationOf(good + "requires=../x\n"), "requires \"../x\", which is not the name of a plug-in"},
            Row{declarationOf(good + "requires=.\n"), "requires \".\", which is not the name of a plug-in"}})
        EXPECT_EQ("its declaration " + std::string(row.problem),
            messageOf([&] { return PimDeclaration::parse(row.section); }));
}

TEST(PimDeclaration, KnowsInterfacesByNameAndTwoNumbers) {
    for (char const* const text :
        {"", "framework", "framework 8", "framework 8.", "framework .0", "framework 8.0.0", " 8.0", "framework -8.0",
            "framework 8.-1", "framework +8.0", "framework 8.0x", "framework 1234567.0", "framework  "})
        EXPECT_FALSE(PimInterface::parse(text)) << text;
    PimInterface const offered = *PimInterface::parse("host 2.3");
    for (auto const& [text, fits] : std::vector<std::pair<char const*, bool>>{{"host 2.3", true}, {"host 2.0", true},
             {"host 2.4", false}, {"host 1.3", false}, {"host 3.0", false}, {"tsoh 2.3", false}})
        EXPECT_EQ(fits, PimInterface::parse(text)->fits(offered)) << text;
}

TEST(PimDeclaration, IsReadFromTheFileOfALibrary) {
    TemporaryFolder const folder;
    auto const read = [&](std::string const& file) {
        return PimDeclaration::read(folder.write("x" KO_SUFFIX, file).string());
    };
    EXPECT_EQ("blur", read(withSection(emptyLibrary(), declarationOf(good)))->name);
    EXPECT_FALSE(read(withSection(emptyLibrary(), declarationOf(good), ".koplugins")));
    EXPECT_FALSE(read("not a library"));
    EXPECT_FALSE(PimDeclaration::read((folder / "missing" KO_SUFFIX).string()));
    EXPECT_THROW(read(withSection(emptyLibrary(), "x")), PimEx::ExRefused);
    EXPECT_THROW(read(withSection(emptyLibrary(), std::string(70000, 'x'))), OsSharedLibEx);
}

} // namespace
