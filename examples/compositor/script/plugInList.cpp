#include "script/plugInList.h"

#include "framework/plugInMgr/pimUtils.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <string>
#include <vector>

namespace compositor {

namespace {

using namespace Ko;

using Row = std::array<std::string, 6>;

std::string stateOf(PimFinding const& finding) {
    switch (finding.stage) {
    case PimStage::Found:
        return "not loaded: " + finding.reason;
    case PimStage::Refused:
        return "refused: " + finding.reason;
    case PimStage::Loaded:
        return "loaded";
    default:
        return "failed: " + finding.reason;
    }
}

Row rowOf(PimFinding const& finding) {
    std::string const type = OsFilePath(finding.path.getBaseName()).getExtension();
    Row row{finding.path.getFileName().getPath(), type, "-", "-", "-", stateOf(finding)};
    if (!finding.declaration) return row;
    PimDeclaration const& declared = *finding.declaration;
    row[2] = declared.name;
    row[3] = declared.version;
    row[4].clear();
    for (PimInterface const& interface : declared.interfaces) {
        if (!row[4].empty()) row[4] += ", ";
        row[4] += interface.getText();
    }
    return row;
}

// The number of characters of a text in UTF-8.
std::size_t widthOf(std::string const& text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

// Aligns the columns, except the last one.
void write(std::vector<Row> const& rows, std::ostream& output) {
    std::array<std::size_t, std::tuple_size_v<Row> - 1> widths{};
    for (Row const& row : rows)
        for (std::size_t column = 0; column < widths.size(); ++column)
            widths[column] = std::max(widths[column], widthOf(row[column]));
    for (Row const& row : rows) {
        for (std::size_t column = 0; column < widths.size(); ++column)
            output << "  " << row[column] << std::string(widths[column] - widthOf(row[column]), ' ');
        output << "  " << row.back() << "\n";
    }
}

} // namespace

void listPlugIns(std::ostream& output) {
    PimReport const report = PimUtils::getReport();
    for (OsFilePath const& directory : report.directories) {
        output << directory.getPath() << "\n";
        std::vector<Row> rows{{"file", "type", "name", "version", "interface", "state"}};
        for (PimFinding const& plugIn : report.plugIns)
            if (plugIn.path.getDirectory() == directory) rows.push_back(rowOf(plugIn));
        write(rows, output);
    }
}

} // namespace compositor
