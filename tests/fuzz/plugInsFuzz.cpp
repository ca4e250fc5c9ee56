// Input: the file of a plug-in, or the declarations of the plug-ins "a.op", "b.op" ... a field. A declaration that begins with
// "KOPLUGIN" is the whole section. Files are only read: none of them is opened as a library.
#include "base/inInit.h"
#include "framework/plugInMgr/pimEx.h"
#include "framework/plugInMgr/pimUtils.h"
#include "framework/plugInMgr/src/pimOrder.h"
#include "framework/plugInMgr/src/pimSettings.h"
#include "resmgt/osSharedLib.h"
#include "tests/fuzz/fuzzing.h"
#include "tests/support/declaredLibrary.h"

#include <algorithm>
#include <link.h>

namespace {

using namespace Ko;
using namespace KoFuzz;

constexpr std::size_t maxPlugIns = 8;
using Texts = std::vector<std::string>;
using Declarations = std::vector<std::optional<PimDeclaration>>;

std::string sectionOf(std::string const& field) {
    return field.starts_with("KOPLUGIN") ? field : KoTest::declarationOf(field);
}

// Nothing where the declaration is refused.
std::optional<PimDeclaration> modelDeclaration(std::string const& field) {
    try {
        PimDeclaration declaration = PimDeclaration::parse(sectionOf(field));
        std::string text =
            "name=" + declaration.name + "\nversion=" + declaration.version + "\ntype=" + declaration.type;
        for (PimInterface const& interface : declaration.interfaces)
            text += "\ninterface=" + interface.getText();
        for (LiString const& required : declaration.required)
            text += "\nrequires=" + required;
        PimDeclaration const again = PimDeclaration::parse(KoTest::declarationOf(text));
        expect(again.required == declaration.required && again.name == declaration.name, "what was read is read again");
        return declaration;
    } catch (PimEx::ExRefused const&) {
        return std::nullopt;
    }
}

std::string nameOf(std::size_t index) {
    return std::string(1, static_cast<char>('a' + index)) + ".op";
}

// Whether a plug-in can be loaded. Adds those before it to `order`, and then itself.
bool modelOrder(Declarations const& plugIns, std::size_t index, Texts& chain, Texts& order) {
    std::string const name = nameOf(index);
    if (index >= plugIns.size() || !plugIns[index] || plugIns[index]->type != "op") return false;
    for (PimInterface const& interface : plugIns[index]->interfaces)
        if (interface.name != "framework" || interface.majorNumber != 8 || interface.minorNumber != 0) return false;
    chain.push_back(name);
    for (LiString const& required : plugIns[index]->required) {
        if (std::find(chain.begin(), chain.end(), required) != chain.end()) return false;
        if (std::find(order.begin(), order.end(), required) != order.end()) continue;
        bool const isNamed = required.size() == 4 && required.ends_with(".op") && required[0] >= 'a';
        if (!isNamed || !modelOrder(plugIns, static_cast<std::size_t>(required[0] - 'a'), chain, order)) return false;
    }
    chain.pop_back();
    order.push_back(name);
    return true;
}

void checkOrder(Folder const& folder, Texts fields) {
    fields.resize(std::min(fields.size(), maxPlugIns));
    Declarations plugIns;
    for (std::size_t index = 0; index < maxPlugIns; ++index) {
        std::string const file = nameOf(index) + ".so";
        std::filesystem::remove(folder / file);
        if (index >= fields.size()) continue;
        folder.write(file, KoTest::withSection(KoTest::emptyLibrary(), sectionOf(fields[index])));
        plugIns.push_back(modelDeclaration(fields[index]));
    }
    Texts chain, expected, order;
    bool const isExpected = modelOrder(plugIns, 0, chain, expected);
    try {
        PimOrder const found((folder / "a.op.so").string());
        for (OsFilePath const& path : found.getRequired())
            order.push_back(path.getBaseName());
        order.push_back("a.op");
        expect(isExpected,
            "a plug-in is refused where it does not fit, or what it requires is missing or goes in a circle");
        expect(order == expected, "required plug-ins are loaded first, each once");
    } catch (PimEx::ExRefused const&) {
        expect(!isExpected, "a plug-in that fits is not refused");
    }
}

void checkFile(Folder const& folder, std::string_view content) {
    std::string const path = folder.write("raw/file.op.so", content).string();
    try {
        auto const section = OsSharedLib::readSection(path, ".koplugin", 1000);
        expect(
            !section || section->empty() || content.find(*section) != content.npos, "a section is a part of the file");
        static_cast<void>(PimDeclaration::read(path));
    } catch (ExBase const&) {
        // Damaged.
    }
}

class Package final : public InInit<Folder> {
public:
    Package() : InInit("plugIns", {}) {}
    PimSettings settings{*this};
};
Package package;

} // namespace

PimSettings const& PimSettings::get() {
    return package.settings;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static Folder const folder;
    std::string_view const input = textOf(data, size);
    if (input.starts_with(ELFMAG))
        checkFile(folder, input);
    else
        checkOrder(folder, fieldsOf(input, 1));
    return 0;
}
