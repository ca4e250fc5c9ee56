#pragma once

#include "window/jobStarter.h"
#include "window/session.h"

#include <QDir>
#include <QLockFile>
#include <QTimer>
#include <memory>
#include <optional>

namespace compositor::window {

/// Keeps a copy of unsaved changes beside the user's files, by hidden jobs, so that they survive the end of the process. The copy goes
/// when the changes are saved or discarded.
class Recovery : public QObject {
    Q_OBJECT

public:
    /// @param folder of the copies of all windows; made if it is missing.
    Recovery(Session& session, JobStarter& jobs, QString const& folder, QObject* parent = nullptr);
    /// Removes the copy: the window was closed as it should be.
    ~Recovery() override;

    /// The default folder.
    [[nodiscard]] static QString defaultFolder();
    /// The copy of a process that was killed.
    struct Found {
        QString copy;
        /// The file of the document; empty for one that was never saved.
        QString path;
    };
    /// The newest such copy, which from now on belongs to this object; nothing if there is none.
    [[nodiscard]] std::optional<Found> takeOver();
    /// Removes a copy that was taken over.
    static void remove(Found const& found);

    /// The file of the document, which is noted with the copy.
    void setPath(QString const& path);
    /// Changes are copied this long after the first of them. 2 s by default.
    void setDelay(std::chrono::milliseconds delay) { _timer.setInterval(delay); }
    [[nodiscard]] QString copy() const { return _name + ".koc"; }

Q_SIGNALS:
    /// The copy is as the document was a moment ago.
    void written();

private:
    void changed();
    void write();
    void removeCopy();

    Session& _session;
    JobStarter& _jobs;
    QDir _folder;
    QString _name;
    QString _path;
    QTimer _timer;
    std::unique_ptr<QLockFile> _lock;
    std::vector<std::unique_ptr<QLockFile>> _takenOver;
    Ko::CbSubscription _clean;
    bool _isWriting = false;
    bool _changedAgain = false;
};

} // namespace compositor::window
