#include "framework/plugInMgr/src/pimOrder.h"

#include "framework/plugInMgr/pimEx.h"
#include "framework/plugInMgr/pimPlugInMgr.h"
#include "framework/plugInMgr/pimUtils.h"
#include "framework/plugInMgr/src/pimInterfaces.h"
#include "framework/plugInMgr/src/pimRecords.h"
#include "framework/plugInMgr/src/pimRules.h"
#include "resmgt/osFile.h"
#include "resmgt/osSharedLib.h"

#include <algorithm>

namespace Ko {

namespace {

// They bound the time and the stack that files written by others can take.
constexpr std::size_t maxChain = 32;
constexpr std::size_t maxRequired = 256;

[[noreturn]] void refuse(LiString const& reason, int line = __builtin_LINE()) {
    throw PimEx::ExRefused("framework\\plugInMgr\\src\\pimOrder", line, reason);
}

void checkDeclaration(OsFilePath const& path, PimDeclaration const& declaration) {
    if (LiString const type = PimRules::getType(path); type != declaration.type)
        refuse("it declares the type \"" + declaration.type + "\", and its file name has the type \"" + type + "\"");
    if (LiString const problem = PimInterfaces::getProblem(declaration); !problem.empty()) refuse(problem);
}

// The first file of that name: beside the plug-in that requires it, then in the plug-in directories.
std::optional<OsFilePath> findFile(OsFilePath const& fileName, OsFilePath const& beside) {
    Vector<OsFilePath> directories{beside};
    Vector<OsFilePath> const& further = PimUtils::getFilePaths();
    directories.insert(directories.end(), further.begin(), further.end());
    for (OsFilePath const& directory : directories) {
        if (directory.isEmpty()) continue;
        OsFilePath path = directory + fileName;
        auto const info = OsFile::getInfo(path);
        if (info && !info->isDirectory && info->size > 0) return path;
    }
    return std::nullopt;
}

} // namespace

PimOrder::PimOrder(OsFilePath const& path) {
    check(path);
    _required.pop_back(); // the plug-in itself
}

LiString PimOrder::getFailure(OsFilePath const& fileName) {
    auto const failure = PimRecords::getFailure(fileName);
    return failure ? "it requires " + fileName.getBaseName() + ", which failed: " + *failure : LiString();
}

void PimOrder::check(OsFilePath const& path) {
    auto const declaration = PimDeclaration::read(path);
    PimRecords::setDeclaration(path, declaration);
    if (declaration) {
        checkDeclaration(path, *declaration);
        _chain.push_back(path);
        for (LiString const& name : declaration->required)
            require(name, path.getDirectory());
        _chain.pop_back();
    }
    _required.push_back(path);
}

void PimOrder::require(LiString const& name, OsFilePath const& directory) {
    OsFilePath const fileName(name + OsSharedLib::getMinSuffix());
    auto const isThis = [&](OsFilePath const& path) { return path.getFileName() == fileName; };
    if (auto const begin = std::find_if(_chain.begin(), _chain.end(), isThis); begin != _chain.end()) {
        LiString circle;
        std::for_each(
            begin, _chain.end(), [&](OsFilePath const& path) { circle += path.getFileName().getPath() + ", "; });
        refuse("plug-ins require one another in a circle: " + circle + fileName.getPath());
    }
    if (_names.contains(fileName)) return;
    if (PimPlugInMgr::getInstance().isLoaded(fileName)) {
        if (LiString const failure = getFailure(fileName); !failure.empty()) refuse(failure);
        return;
    }
    auto const path = findFile(fileName, directory);
    if (!path) refuse("it requires " + name + ", which is in none of the plug-in directories");
    if (PimRules::isFilteredOut(*path)) refuse("it requires " + name + ", which is filtered out");
    if (_chain.size() == maxChain || _names.size() == maxRequired) refuse("it requires too many plug-ins");
    _names.insert(fileName);
    PimRecords::set(*path, PimStage::Found, "is required by " + _chain.back().getPath());
    try {
        check(*path);
    } catch (ExBase& error) {
        error.addContext("it requires " + name + ", which is refused");
        throw;
    }
}

} // namespace Ko
