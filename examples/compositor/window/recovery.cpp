#include "window/recovery.h"

#include "host/protocols.h"

#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUuid>

namespace compositor::window {

namespace {

using namespace std::chrono_literals;

QString textOf(QString const& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

std::unique_ptr<QLockFile> tryLock(QString const& name) {
    auto lock = std::make_unique<QLockFile>(name + ".lock");
    // Locks do not age: they end with their process.
    lock->setStaleLockTime(0);
    return lock->tryLock(0) ? std::move(lock) : nullptr;
}

} // namespace

Recovery::Recovery(Session& session, JobStarter& jobs, QString const& folder, QObject* parent)
    : QObject(parent), _session(session), _jobs(jobs), _folder(folder) {
    _folder.mkpath(".");
    _name = _folder.filePath(QUuid::createUuid().toString(QUuid::WithoutBraces));
    _lock = tryLock(_name);
    _timer.setSingleShot(true);
    _timer.setInterval(2s);
    connect(&_timer, &QTimer::timeout, this, &Recovery::write);
    connect(&_session, &Session::documentChanged, this, &Recovery::changed);
    _clean = _session.editor().history()->onCleanChange([this] {
        if (_session.editor().history()->isClean()) removeCopy();
    });
}

Recovery::~Recovery() {
    removeCopy();
}

QString Recovery::defaultFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) + "/recovery";
}

std::optional<Recovery::Found> Recovery::takeOver() {
    for (QFileInfo const& info : _folder.entryInfoList({"*.koc"}, QDir::Files, QDir::Time)) {
        QString const name = info.dir().filePath(info.completeBaseName());
        if (name == _name) continue;
        auto lock = tryLock(name);
        if (!lock) continue;
        _takenOver.push_back(std::move(lock));
        return Found{info.filePath(), textOf(name + ".path")};
    }
    return std::nullopt;
}

void Recovery::remove(Found const& found) {
    QFileInfo const copy(found.copy);
    QFile::remove(found.copy);
    QFile::remove(copy.dir().filePath(copy.completeBaseName() + ".path"));
}

void Recovery::setPath(QString const& path) {
    _path = path;
    QSaveFile file(_name + ".path");
    if (file.open(QIODevice::WriteOnly)) {
        file.write(path.toUtf8());
        file.commit();
    }
}

void Recovery::changed() {
    if (!_timer.isActive()) _timer.start();
}

void Recovery::write() {
    // The state in the middle of a drag is not worth recovering.
    if (_session.gestures().isDragging()) return _timer.start();
    if (_session.editor().history()->isClean()) return removeCopy();
    _changedAgain = std::exchange(_isWriting, true);
    if (_changedAgain) return;
    _jobs.startHidden(makeSaveProtocol(_session.document(), copy().toStdString()), [this](Ko::BgJob&) {
        _isWriting = false;
        if (_session.editor().history()->isClean()) removeCopy();
        if (std::exchange(_changedAgain, false)) changed();
        Q_EMIT written();
    });
}

void Recovery::removeCopy() {
    if (_isWriting) return;
    _timer.stop();
    QFile::remove(copy());
}

} // namespace compositor::window
