#pragma once

#include "window/jobStarter.h"
#include "window/recovery.h"
#include "window/session.h"

#include <QSettings>
#include <QStringList>
#include <QWidget>

namespace compositor::window {

/// Opens and saves documents and pictures for a window, by its dialogs, and remembers the last files. What is written is written by jobs.
class Files : public QObject {
    Q_OBJECT

public:
    Files(Session& session, JobStarter& jobs, QSettings& settings, QWidget& window);

    /// The file of the document; empty for a new one.
    [[nodiscard]] QString const& path() const { return _path; }
    /// The name for a title.
    [[nodiscard]] QString name() const;
    [[nodiscard]] QStringList recent() const;

    /// Opens a document, after the question for unsaved changes, or adds a picture as a layer. @returns whether it is open.
    bool open(QString const& path);
    /// Opens the copy of a process that was killed, as unsaved changes to its document.
    bool openRecovered(Recovery::Found const& found);
    /// Starts a document without layers, after that question.
    void startNew();
    void askToOpen();
    void askToAdd();
    /// Adds pictures as layers, in one step.
    void add(QStringList const& paths);
    /// Saves in a job; asks for the file where there is none. @returns whether a job was started.
    bool save();
    bool askToSaveAs();
    void saveAs(QString const& path);
    void askToExport();
    void exportTo(QString const& path);

    /// Whether the changes may be given up: there are none, or they are saved now, or the user does not want them.
    bool settleChanges();

Q_SIGNALS:
    void pathChanged();
    void recentChanged();
    /// For the status line.
    void done(QString const& text);

private:
    bool isModified() const { return !_session.editor().history()->isClean(); }
    void setPath(QString const& path);
    void remember(QString const& path);
    QString chooseFile();
    void startSave(QString const& path, std::function<void(bool isSaved)> const& whenEnded);
    bool saveAndWait();
    QString folder() const;

    Session& _session;
    JobStarter& _jobs;
    QSettings& _settings;
    QWidget& _window;
    QString _path;
};

} // namespace compositor::window
