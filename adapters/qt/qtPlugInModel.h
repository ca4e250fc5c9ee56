#pragma once

#include "adapters/qt/qtApi.h"
#include "framework/plugInMgr/pimReport.h"

#include <QAbstractTableModel>

namespace Ko {

/// The plug-ins as a table: found, loaded, refused or failed, and why. Application thread only.
///
///     auto* const model = new QtPlugInModel(dialog);
///     table->setModel(model);
class KO_QT_API QtPlugInModel : public QAbstractTableModel {
    Q_OBJECT

public:
    /// The columns, in their order.
    enum Column { Name, Version, Type, State, Reason, File, NumColumns };
    /// What the model has beside texts, tool tips and colours.
    enum Role {
        StageRole = Qt::UserRole ///< `PimStage`, as an int.
    };

    explicit QtPlugInModel(QObject* parent = nullptr);
    ~QtPlugInModel() override;

    /// The directories that were searched.
    [[nodiscard]] QStringList getDirectories() const;

    int rowCount(QModelIndex const& parent = {}) const override;
    int columnCount(QModelIndex const& parent = {}) const override;
    QVariant data(QModelIndex const& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

public Q_SLOTS:
    /// Reads the present state; to be called after plug-ins were loaded.
    void refresh();

private:
    static QString textOf(PimFinding const& plugIn, int column);

    PimReport _report;
};

} // namespace Ko
