// A stand-in for a file manager: a window titled "Drag Source" that, when
// pressed with the left button, drags file URLs to whatever takes them.
// The drop tests run it beside the application on their X server so that
// the drag crosses from one process to another over XDND, as an operator's
// does.
//
//   tarnix-test-drag-source X Y FILE...
//
// Tells on standard output, one line each, what the test polls for:
// "shown" once the window is mapped, "dragging" once a drag has begun (from
// then on it follows the pointer), "accepts" or "refuses" whenever the
// window under the pointer changes its answer, and "dropped N" when the
// drag has ended (the Qt::DropAction done; 0: none).

#include <QApplication>
#include <QCursor>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QTimer>
#include <QUrl>
#include <QWidget>

#include <cstdio>

namespace {

void tell(const QByteArray &line)
{
    std::fputs(line.constData(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

class DragSourceWindow : public QWidget
{
public:
    explicit DragSourceWindow(QList<QUrl> urls) : m_urls(std::move(urls))
    {
        setWindowTitle(QStringLiteral("Drag Source"));
        setAutoFillBackground(true);
        QPalette colours = palette();
        colours.setColor(QPalette::Window, QColor(0x40, 0x80, 0x40));
        setPalette(colours);
    }

protected:
    void showEvent(QShowEvent *event) override
    {
        QWidget::showEvent(event);
        tell("shown");
    }

    void mousePressEvent(QMouseEvent *event) override
    {
        if (event->button() != Qt::LeftButton)
            return;
        auto *mime = new QMimeData;
        mime->setUrls(m_urls);
        auto *drag = new QDrag(this);
        drag->setMimeData(mime);
        // The target's answer reaches a drag source only as the cursor the
        // drag shows: forbidden while refused, a copy cursor once accepted.
        QTimer answerWatch;
        answerWatch.setInterval(10);
        QByteArray lastAnswer;
        QObject::connect(&answerWatch, &QTimer::timeout, this, [&lastAnswer] {
            const QCursor *cursor = QGuiApplication::overrideCursor();
            const QByteArray answer = cursor && cursor->shape() == Qt::DragCopyCursor ? "accepts" : "refuses";
            if (answer != lastAnswer)
                tell(lastAnswer = answer);
        });
        answerWatch.start();
        tell("dragging");
        const Qt::DropAction result = drag->exec(Qt::CopyAction, Qt::CopyAction);
        answerWatch.stop();
        tell("dropped " + QByteArray::number(int(result)));
    }

private:
    QList<QUrl> m_urls;
};

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 4) {
        std::fprintf(stderr, "usage: tarnix-test-drag-source X Y FILE...\n");
        return 2;
    }
    QList<QUrl> urls;
    for (const QString &path : arguments.mid(3))
        urls.append(QUrl::fromLocalFile(path));
    DragSourceWindow window(urls);
    window.setGeometry(arguments.at(1).toInt(), arguments.at(2).toInt(), 160, 120);
    window.show();
    return app.exec();
}
