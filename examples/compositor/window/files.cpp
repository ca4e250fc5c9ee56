#include "window/files.h"

#include "framework/command/cmUndoGuard.h"
#include "host/protocols.h"

#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QStandardPaths>

namespace compositor::window {

namespace {

constexpr char const* recentKey = "recentFiles";
constexpr qsizetype mostRecent = 8;

bool isComplete(Ko::BgJob const& job) {
    return job.getState()->getHintValue() == Ko::BgJobHintChangeState::Complete;
}

bool isDocument(QString const& path) {
    return QFileInfo(path).suffix().compare("koc", Qt::CaseInsensitive) == 0;
}

QString withSuffix(QString const& path, QString const& suffix) {
    return QFileInfo(path).suffix().isEmpty() ? path + "." + suffix : path;
}

} // namespace

Files::Files(Session& session, JobStarter& jobs, QSettings& settings, QWidget& window)
    : QObject(&window), _session(session), _jobs(jobs), _settings(settings), _window(window) {}

QString Files::name() const {
    return _path.isEmpty() ? tr("Untitled") : QFileInfo(_path).fileName();
}

QStringList Files::recent() const {
    return _settings.value(recentKey).toStringList();
}

void Files::remember(QString const& path) {
    QStringList paths = recent();
    paths.removeAll(path);
    paths.prepend(path);
    _settings.setValue(recentKey, QStringList(paths.mid(0, mostRecent)));
    Q_EMIT recentChanged();
}

void Files::setPath(QString const& path) {
    _path = path;
    if (!path.isEmpty()) remember(path);
    Q_EMIT pathChanged();
}

QString Files::folder() const {
    return _path.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::PicturesLocation)
                           : QFileInfo(_path).path();
}

bool Files::open(QString const& path) {
    if (!isDocument(path)) {
        add({path});
        return true;
    }
    if (!settleChanges()) return false;
    QString const absolute = QFileInfo(path).absoluteFilePath();
    if (!_session.attempt([&] { _session.editor().open(absolute.toStdString(), ""); })) return false;
    setPath(absolute);
    return true;
}

bool Files::openRecovered(Recovery::Found const& found) {
    if (!_session.attempt([&] { _session.editor().open(found.copy.toStdString(), ""); })) return false;
    _session.editor().history()->resetClean();
    setPath(found.path);
    return true;
}

void Files::startNew() {
    if (!settleChanges()) return;
    _session.attempt([this] { _session.editor().startNew(); });
    setPath({});
}

void Files::askToOpen() {
    QString const path = QFileDialog::getOpenFileName(&_window, tr("Open"), folder(), tr("Documents (*.koc)"));
    if (!path.isEmpty()) open(path);
}

void Files::askToAdd() {
    add(QFileDialog::getOpenFileNames(&_window, tr("Add Pictures"), folder(), tr("Pictures (*.png)")));
}

// Each that cannot be read is reported, and the others are added.
void Files::add(QStringList const& paths) {
    if (paths.isEmpty()) return;
    Ko::CmUndoGuard const guard(_session.editor().history(), tr("Add Pictures").toStdString());
    for (QString const& path : paths)
        _session.attempt([&] {
            std::string const wanted = QFileInfo(path).completeBaseName().toStdString();
            _session.editor().open(path.toStdString(), _session.editor().freeName(wanted));
        });
}

bool Files::save() {
    if (_path.isEmpty()) return askToSaveAs();
    saveAs(_path);
    return true;
}

QString Files::chooseFile() {
    QString const path =
        QFileDialog::getSaveFileName(&_window, tr("Save As"), folder() + "/" + name(), tr("Documents (*.koc)"));
    return path.isEmpty() ? path : withSuffix(path, "koc");
}

bool Files::askToSaveAs() {
    QString const path = chooseFile();
    if (!path.isEmpty()) saveAs(path);
    return !path.isEmpty();
}

void Files::saveAs(QString const& path) {
    startSave(path, {});
}

// The job saves a copy of the document, which is what the mark stands for. A retry saves the document as it is then.
void Files::startSave(QString const& path, std::function<void(bool isSaved)> const& whenEnded) {
    auto const number = std::make_shared<int>();
    _jobs.start(
        [this, path, number] {
            auto protocol = makeSaveProtocol(_session.document(), path.toStdString());
            *number = _session.editor().beginSave();
            return protocol;
        },
        [this, path, number, whenEnded](Ko::BgJob& job) {
            bool const isSaved = isComplete(job);
            if (isSaved) {
                setPath(path);
                Q_EMIT done(tr("Saved %1").arg(QFileInfo(path).fileName()));
            } else {
                _session.editor().saveHasFailed(*number);
            }
            if (whenEnded) whenEnded(isSaved);
        });
}

void Files::askToExport() {
    QString const path = QFileDialog::getSaveFileName(
        &_window, tr("Export"), folder() + "/" + QFileInfo(name()).completeBaseName() + ".png", tr("Pictures (*.png)"));
    if (!path.isEmpty()) exportTo(withSuffix(path, "png"));
}

void Files::exportTo(QString const& path) {
    _jobs.start([document = _session.document(), path] { return makeRenderProtocol(document, path.toStdString()); },
        [this, path](Ko::BgJob& job) {
            if (isComplete(job)) Q_EMIT done(tr("Exported %1").arg(QFileInfo(path).fileName()));
        });
}

bool Files::settleChanges() {
    if (!isModified()) return true;
    QMessageBox question(QMessageBox::Warning, tr("Unsaved Changes"),
        tr("%1 has changes that are not saved.").arg(name()),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, &_window);
    question.setInformativeText(tr("They are lost unless you save them."));
    question.setDefaultButton(QMessageBox::Save);
    switch (question.exec()) {
    case QMessageBox::Save:
        return saveAndWait();
    case QMessageBox::Discard:
        return true;
    default:
        return false;
    }
}

// The window is redrawn while the job runs.
bool Files::saveAndWait() {
    QString const path = _path.isEmpty() ? chooseFile() : _path;
    if (path.isEmpty()) return false;
    auto const loop = std::make_shared<QEventLoop>();
    auto const result = std::make_shared<bool>(false);
    startSave(path, [loop, result](bool isSaved) {
        *result = isSaved;
        loop->quit();
    });
    loop->exec(QEventLoop::ExcludeUserInputEvents);
    return *result;
}

} // namespace compositor::window
