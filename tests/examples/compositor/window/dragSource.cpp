// A program from which a file is dragged by mouse: the other side of drops between programs. It writes what happens to its
// drag, a line each, so that a script can follow it:  dragSource FILE

#include <QApplication>
#include <QDrag>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>
#include <iostream>

namespace {

class Source final : public QLabel {
public:
    explicit Source(QString const& path) : QLabel(path), _path(path) { setWindowTitle("Drag Source"); }

protected:
    void mouseMoveEvent(QMouseEvent* event) override {
        if (!(event->buttons() & Qt::LeftButton)) return;
        auto* const drag = new QDrag(this); // deleted by Qt at its end
        auto* const file = new QMimeData;   // owned by the drag
        file->setUrls({QUrl::fromLocalFile(_path)});
        drag->setMimeData(file);
        connect(drag, &QDrag::actionChanged, this, [](Qt::DropAction action) {
            std::cout << (action == Qt::IgnoreAction ? "refused" : "accepted") << std::endl;
        });
        std::cout << "dragging" << std::endl;
        bool const isTaken = drag->exec(Qt::CopyAction) == Qt::CopyAction;
        std::cout << (isTaken ? "copied" : "nothing") << std::endl;
    }

private:
    QString const _path;
};

} // namespace

int main(int argc, char** argv) {
    QApplication const application(argc, argv);
    Source source(QApplication::arguments().value(1));
    source.setGeometry(0, 0, 120, 60);
    source.show();
    return QApplication::exec();
}
