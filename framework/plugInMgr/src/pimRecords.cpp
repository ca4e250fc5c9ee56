#include "framework/plugInMgr/src/pimRecords.h"

#include <algorithm>
#include <map>
#include <mutex>

namespace Ko {

namespace {

class Records {
public:
    // The finding of a file, which is added where there is none yet.
    PimFinding& of(OsFilePath const& path) {
        if (auto const known = _byPath.find(path); known != _byPath.end()) return report.plugIns[known->second];
        report.plugIns.push_back({path, PimStage::Found, {}, {}});
        try {
            _byPath.emplace(path, report.plugIns.size() - 1);
        } catch (...) {
            report.plugIns.pop_back();
            throw;
        }
        return report.plugIns.back();
    }
    PimFinding* find(OsFilePath const& path) noexcept {
        auto const known = _byPath.find(path);
        return known == _byPath.end() ? nullptr : &report.plugIns[known->second];
    }

    std::mutex mutex;
    PimReport report;
    // The path under which each file name was loaded.
    std::map<OsFilePath, OsFilePath> loaded;

private:
    std::map<OsFilePath, std::size_t> _byPath;
};

Records records;

} // namespace

PimReport PimRecords::getReport() {
    std::lock_guard const guard(records.mutex);
    return records.report;
}

void PimRecords::addSearched(OsFilePath const& directory) {
    std::lock_guard const guard(records.mutex);
    Vector<OsFilePath>& known = records.report.directories;
    if (std::find(known.begin(), known.end(), directory) == known.end()) known.push_back(directory);
}

bool PimRecords::set(OsFilePath const& path, PimStage stage, LiString const& reason) {
    std::lock_guard const guard(records.mutex);
    PimFinding& finding = records.of(path);
    if (finding.stage == stage && finding.reason == reason) return false;
    finding.reason = reason;
    finding.stage = stage;
    return true;
}

void PimRecords::setDeclaration(OsFilePath const& path, std::optional<PimDeclaration> declaration) {
    std::lock_guard const guard(records.mutex);
    records.of(path).declaration = std::move(declaration);
}

void PimRecords::setLoading(OsFilePath const& path) {
    set(path, PimStage::Found, "is being loaded");
    std::lock_guard const guard(records.mutex);
    records.loaded.insert_or_assign(path.getFileName(), path);
}

void PimRecords::setLoaded(OsFilePath const& path) noexcept {
    std::lock_guard const guard(records.mutex);
    PimFinding* const finding = records.find(path);
    finding->stage = PimStage::Loaded;
    finding->reason.clear();
}

void PimRecords::setFailed(OsFilePath const& path, char const* reason) noexcept {
    std::lock_guard const guard(records.mutex);
    PimFinding* const finding = records.find(path);
    finding->stage = PimStage::Failed;
    try {
        finding->reason = reason;
    } catch (...) {
        finding->reason.clear();
    }
}

std::optional<OsFilePath> PimRecords::getNamesake(OsFilePath const& path) {
    std::lock_guard const guard(records.mutex);
    auto const other = records.loaded.find(path.getFileName());
    if (other == records.loaded.end() || other->second == path) return std::nullopt;
    return other->second;
}

std::optional<LiString> PimRecords::getFailure(OsFilePath const& fileName) {
    std::lock_guard const guard(records.mutex);
    auto const path = records.loaded.find(fileName);
    if (path == records.loaded.end()) return std::nullopt;
    PimFinding const& finding = *records.find(path->second);
    return finding.stage == PimStage::Failed ? std::optional(finding.reason) : std::nullopt;
}

} // namespace Ko
