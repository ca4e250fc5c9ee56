#include "adapters/qt/qtPlugInModel.h"

#include "adapters/qt/src/qtShapes.h"
#include "framework/plugInMgr/pimUtils.h"

#include <algorithm>

namespace Ko {
namespace {

QString stageText(PimStage stage) {
    switch (stage) {
    case PimStage::Loaded:
        return QtPlugInModel::tr("Loaded");
    case PimStage::Refused:
        return QtPlugInModel::tr("Refused");
    case PimStage::Failed:
        return QtPlugInModel::tr("Failed");
    case PimStage::Found:
        break;
    }
    return QtPlugInModel::tr("Not loaded");
}

bool isBad(PimStage stage) {
    return stage == PimStage::Refused || stage == PimStage::Failed;
}

} // namespace

QtPlugInModel::QtPlugInModel(QObject* parent) : QAbstractTableModel(parent), _report(PimUtils::getReport()) {}
QtPlugInModel::~QtPlugInModel() = default;

QStringList QtPlugInModel::getDirectories() const {
    QStringList names;
    for (OsFilePath const& directory : _report.directories)
        names.append(QString::fromStdString(directory.getPath()));
    return names;
}

int QtPlugInModel::rowCount(QModelIndex const& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(_report.plugIns.size());
}
int QtPlugInModel::columnCount(QModelIndex const& parent) const {
    return parent.isValid() ? 0 : NumColumns;
}

QVariant QtPlugInModel::data(QModelIndex const& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    PimFinding const& plugIn = _report.plugIns[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return textOf(plugIn, index.column());
    case Qt::ToolTipRole:
        return textOf(plugIn, index.column() == Name ? File : index.column());
    case Qt::DecorationRole:
        if (index.column() != Name) return {};
        return qtIcon(isBad(plugIn.stage)                ? QtShape::Failed
                      : plugIn.stage == PimStage::Loaded ? QtShape::Done
                                                         : QtShape::Waiting);
    case Qt::ForegroundRole:
        return isBad(plugIn.stage) && (index.column() == State || index.column() == Reason)
                   ? QVariant(qtFailureColour())
                   : QVariant();
    case StageRole:
        return static_cast<int>(plugIn.stage);
    default:
        return {};
    }
}

QVariant QtPlugInModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= NumColumns) return {};
    QString const titles[] = {tr("Plug-in"), tr("Version"), tr("Type"), tr("State"), tr("Reason"), tr("File")};
    return titles[section];
}

QString QtPlugInModel::textOf(PimFinding const& plugIn, int column) {
    // "blur.op.so": the name and the type, also of a file that declares nothing.
    QString file = QString::fromStdString(plugIn.path.getPath());
    QStringList const parts = file.section(u'/', -1).split(u'.');
    auto const& declared = plugIn.declaration;
    switch (column) {
    case Name:
        return declared ? QString::fromStdString(declared->name) : parts.front();
    case Version:
        return declared ? QString::fromStdString(declared->version) : QString();
    case Type:
        return declared ? QString::fromStdString(declared->type) : parts.value(1);
    case State:
        return stageText(plugIn.stage);
    case Reason:
        return QString::fromStdString(plugIn.reason);
    default:
        return file;
    }
}

// Files are only ever added to the report, after the others.
void QtPlugInModel::refresh() {
    PimReport report = PimUtils::getReport();
    int const numBefore = rowCount();
    int const numNow = static_cast<int>(report.plugIns.size());
    if (numNow > numBefore) beginInsertRows({}, numBefore, numNow - 1);
    _report = std::move(report);
    if (numNow > numBefore) endInsertRows();
    if (numBefore > 0) Q_EMIT dataChanged(index(0, 0), index(numBefore - 1, NumColumns - 1));
}

} // namespace Ko
