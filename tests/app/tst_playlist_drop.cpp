// Files dragged from another program onto the playlist panel of the built
// application, with a real pointer on a private X server: the drag crosses
// processes over XDND exactly as one from a file manager does. The pointer
// is driven with xdotool; the other program is tarnix-test-drag-source.
// Files dropped on the items join the active playlist; files dropped on a
// tab make that playlist the active one and join it.

#include "app_process.h"
#include "x_windows.h"

#include "support/private_pulse_audio.h"
#include "support/test_paths.h"
#include "video/private_xvfb.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QPoint>
#include <QRect>
#include <QStandardPaths>
#include <QtTest>

using namespace tarnix::test;

namespace {

bool xdotool(const QStringList &arguments)
{
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), arguments);
    return tool.waitForFinished(10000) && tool.exitCode() == 0;
}

// The frame of the playlist items view in a picture of the controller
// window, as the default skin draws it: a sunken frame, darkest at its left
// and top edges and lighter at its right and bottom, on the panel's
// background, which is even along a line. The panel is the window's left
// column; its items view is the first framed area met on a line through it,
// and its right edge runs down from there.
QRect itemsViewIn(const QImage &window, int lineThroughItems)
{
    const QRgb shadow = qRgb(0x05, 0x06, 0x07);
    const QRgb light = qRgb(0x3a, 0x3e, 0x46);
    auto at = [&](int x, int y) { return x >= 0 && y >= 0 && x < window.width() && y < window.height() ? window.pixel(x, y) : 0; };
    const int y = lineThroughItems;
    int left = -1;
    for (int x = 1; x < window.width() && left < 0; ++x) {
        if (at(x, y) == shadow && at(x - 1, y) != shadow)
            left = x;
    }
    int right = -1;
    for (int x = left + 1; left >= 0 && x < window.width() - 9 && right < 0; ++x) {
        const QRgb background = at(x + 1, y);
        bool backgroundAfter = at(x, y) == light && background != light;
        for (int i = 2; i <= 8 && backgroundAfter; ++i)
            backgroundAfter = at(x + i, y) == background;
        if (backgroundAfter)
            right = x;
    }
    if (right < 0)
        return {};
    int top = y;
    while (at(right, top - 1) == light)
        --top;
    int bottom = y;
    while (at(right, bottom + 1) == light)
        ++bottom;
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

// Whether the items show as tiles: side by side with the view's own
// background between them, where list rows run across the whole width.
// `rows` items are in the picture of the view.
bool showsTiles(const QImage &items, int rows)
{
    // The height the list rows cover, less a margin.
    const int height = std::min(items.height(), 72 * std::min(rows, 2)) - 10;
    for (int x = 100; x < items.width() - 100; ++x) {
        int bare = 0;
        for (int y = 5; y < height && items.pixel(x, y) == qRgb(0x11, 0x13, 0x18); ++y)
            ++bare;
        if (height > 20 && bare >= height - 5)
            return true;
    }
    return false;
}

QJsonArray playlists(const AppProcess &app)
{
    return app.ctl({"playlists"}).object().value("playlists").toArray();
}

QJsonArray itemsOf(const AppProcess &app, int number)
{
    for (const QJsonValue &playlist : playlists(app)) {
        if (playlist.toObject().value("number").toInt() == number)
            return playlist.toObject().value("items").toArray();
    }
    return {};
}

// The drag source as the test sees it: its window, and the lines it tells.
class DragSource
{
public:
    bool start(const QPoint &at, const QStringList &files)
    {
        // On the test's X server, whatever platform the test itself runs on.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(TARNIX_TEST_DRAG_SOURCE),
                        QStringList{QString::number(at.x()), QString::number(at.y())} + files);
        return m_process.waitForStarted(10000) && !waitFor("shown", 10000).isEmpty();
    }

    ~DragSource()
    {
        m_process.kill();
        m_process.waitForFinished(10000);
    }

    // The first line not yet waited for that starts with `prefix`, or an
    // empty text when none comes in time.
    QString waitFor(const QString &prefix, int timeoutMs)
    {
        QString found;
        (void)QTest::qWaitFor(
            [&] {
                read();
                for (; m_next < m_lines.size(); ++m_next) {
                    if (m_lines.at(m_next).startsWith(prefix)) {
                        found = m_lines.at(m_next++);
                        return true;
                    }
                }
                return false;
            },
            timeoutMs);
        return found;
    }

    // Whether the window under the pointer takes the drag, as last told in
    // the drag under way.
    bool targetAccepts()
    {
        read();
        for (qsizetype i = m_lines.size() - 1; i >= 0 && m_lines.at(i) != QLatin1String("dragging"); --i) {
            if (m_lines.at(i) == QLatin1String("accepts") || m_lines.at(i) == QLatin1String("refuses"))
                return m_lines.at(i) == QLatin1String("accepts");
        }
        return false;
    }

private:
    void read()
    {
        m_partial += QString::fromLocal8Bit(m_process.readAllStandardOutput());
        for (qsizetype end = m_partial.indexOf('\n'); end >= 0; end = m_partial.indexOf('\n')) {
            m_lines << m_partial.left(end);
            m_partial.remove(0, end + 1);
        }
    }

    QProcess m_process;
    QString m_partial;
    QStringList m_lines;
    qsizetype m_next = 0;
};

struct DropOutcome {
    bool accepted = false;    // the window under the pointer took the drag
    int dropAction = -1;      // what the drag source was told was done
};

} // namespace

class TestPlaylistDrop : public QObject
{
    Q_OBJECT

private:
    static constexpr char kController[] = "TARNIX Controller";
    // Both on the screen, side by side: the controller window at the top
    // left, the drag source to its right below.
    const QPoint m_controllerPlace{0, 0};
    const QPoint m_sourcePlace{1200, 700};

    PrivateXvfb m_xvfb;
    PrivatePulseAudio m_pulse;
    QTemporaryDir m_home;
    std::unique_ptr<AppProcess> m_app;
    DragSource m_source;
    QStringList m_files;
    QRect m_controller;
    // The items view, in the controller window.
    QRect m_items;

    // Presses on the drag source, moves the pointer to `target` and lets go
    // there. Qt begins the drag on the press but looks for a target only
    // as the pointer moves, so the moves come after the drag has begun, and
    // the button is let go only once the target has answered the last one.
    DropOutcome dragFilesTo(const QPoint &target)
    {
        DropOutcome outcome;
        const QString sourceId = topLevelWindowId(QStringLiteral("Drag Source"));
        if (sourceId.isEmpty() || !xdotool({"windowraise", QString::number(sourceId.toUInt(nullptr, 16))}))
            return outcome;
        const QPoint press = m_sourcePlace + QPoint(80, 60);
        if (!xdotool({"mousemove", QString::number(press.x()), QString::number(press.y()), "mousedown", "1"}))
            return outcome;
        if (m_source.waitFor("dragging", 10000).isEmpty()) {
            xdotool({"mouseup", "1"});
            return outcome;
        }
        // On the way the pointer stays off the controller window, below
        // the target, and enters it only in the last step: an acceptance
        // told is then the target's own.
        const QPoint beside(target.x(), m_controller.bottom() + 80);
        for (const QPoint &at : {(press + beside) / 2, beside, target})
            xdotool({"mousemove", QString::number(at.x()), QString::number(at.y())});
        outcome.accepted = QTest::qWaitFor([&] { return m_source.targetAccepts(); }, 5000);
        xdotool({"mouseup", "1"});
        const QString dropped = m_source.waitFor("dropped", 10000);
        if (!dropped.isEmpty())
            outcome.dropAction = dropped.section(' ', 1).toInt();
        return outcome;
    }

    void click(const QPoint &at)
    {
        xdotool({"mousemove", QString::number(at.x()), QString::number(at.y()), "click", "1"});
    }

    // Waits until the playlist holds `before` and the dropped files after
    // them, all analysed and ready; the reason when not.
    QString waitForDroppedItems(int playlist, const QJsonArray &before)
    {
        QJsonArray items;
        const bool arrived = QTest::qWaitFor(
            [&] {
                items = itemsOf(*m_app, playlist);
                if (items.size() != before.size() + m_files.size())
                    return false;
                for (qsizetype i = 0; i < items.size(); ++i) {
                    const QJsonObject item = items.at(i).toObject();
                    if (item.value("status") != "ready")
                        return false;
                    if (i < before.size() ? item.value("id") != before.at(i).toObject().value("id")
                                          : item.value("filePath") != m_files.at(i - before.size()))
                        return false;
                }
                return true;
            },
            60000);
        if (arrived)
            return {};
        QStringList shown;
        for (const QJsonValue &item : std::as_const(items))
            shown << item.toObject().value("displayName").toString() + ' ' + item.toObject().value("status").toString();
        return QStringLiteral("playlist %1 holds [%2], wanted %3 more ready after %4; operations: %5")
            .arg(playlist)
            .arg(shown.join(", "))
            .arg(m_files.size())
            .arg(before.size())
            .arg(m_app->logMessages().filter(QRegularExpression("AddFiles|ActivatePlaylist|OP result")).join(" | "));
    }

private slots:
    void initTestCase()
    {
        for (const char *tool : {"xdotool", "xwininfo"})
            QVERIFY2(!QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty(),
                     qPrintable(QStringLiteral("%1 is missing").arg(QLatin1String(tool))));
        // Stills are left out: each asks the operator for its display time.
        for (const char *name : {"h264-aac.mp4", "tone-1s.wav", "vp8-vorbis.webm"}) {
            m_files << QDir(QStringLiteral(TARNIX_TEST_MEDIA_DIR)).filePath(QLatin1String(name));
            QVERIFY2(QFileInfo::exists(m_files.last()), qPrintable(m_files.last()));
        }
        QVERIFY(m_xvfb.start("1600x1000x24"));
        QString error;
        QVERIFY2(m_pulse.start(&error), qPrintable(error));

        m_app = std::make_unique<AppProcess>(m_home);
        m_app->setPulseServer(m_pulse.serverAddress());
        m_app->setDisplay(qEnvironmentVariable("DISPLAY"));
        QVERIFY2(m_app->start(), qPrintable(m_app->console()));
        QVERIFY(QTest::qWaitFor([] { return mapState(kController) == "IsViewable"; }, 10000));
        QVERIFY(moveWindow(kController, m_controllerPlace.x(), m_controllerPlace.y()));
        QVERIFY(QTest::qWaitFor([&] { return windowGeometry(kController).topLeft() == m_controllerPlace; }, 10000));
        m_controller = windowGeometry(kController);
        // A line through the items view, below the tabs and the name row.
        QVERIFY(QTest::qWaitFor([&] { return !(m_items = itemsViewIn(grabWindow(kController, &error), 100)).isEmpty(); },
                                10000));
        QVERIFY2(m_items.width() > 300 && m_items.height() > 100,
                 qPrintable(QStringLiteral("items view found at %1,%2 %3x%4")
                                .arg(m_items.x()).arg(m_items.y()).arg(m_items.width()).arg(m_items.height())));
        // Started after the application, so that it is stacked above the
        // program window that covers the screen.
        QVERIFY(m_source.start(m_sourcePlace, m_files));
        QVERIFY(QTest::qWaitFor([] { return mapState("Drag Source") == "IsViewable"; }, 10000));
        QVERIFY2(!m_controller.intersects(QRect(m_sourcePlace, QSize(160, 120))),
                 "the controller window covers the drag source");
    }

    void cleanupTestCase()
    {
        if (m_app)
            QCOMPARE(m_app->terminate(), 0);
        m_pulse.stop();
    }

    void filesDroppedOnTheItemsJoinTheActivePlaylist_data()
    {
        QTest::addColumn<bool>("tiles");
        QTest::newRow("list") << false;
        QTest::newRow("tiles") << true;
    }

    void filesDroppedOnTheItemsJoinTheActivePlaylist()
    {
        QFETCH(bool, tiles);
        const QJsonArray before = itemsOf(*m_app, 1);
        // The view buttons sit at the right end of the name row above the items.
        click(m_controller.topLeft() + QPoint(m_items.right() - (tiles ? 14 : 46), m_items.top() - 17));
        // Items already there show which view is up.
        QString error;
        if (!before.isEmpty())
            QVERIFY2(QTest::qWaitFor(
                         [&] { return showsTiles(grabWindow(kController, &error).copy(m_items), int(before.size())) == tiles; },
                         10000),
                     qPrintable(QStringLiteral("the %1 view did not come %2").arg(tiles ? "tile" : "list", error)));

        // Well inside the items, towards the left.
        const DropOutcome outcome =
            dragFilesTo(m_controller.topLeft() + m_items.center() - QPoint(m_items.width() / 4, 0));
        QVERIFY2(outcome.accepted, "the playlist items refused the files");
        QCOMPARE(outcome.dropAction, int(Qt::CopyAction));
        const QString failure = waitForDroppedItems(1, before);
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
    }

    void filesDroppedOnAnotherTabGoToThatPlaylist()
    {
        QCOMPARE(m_app->ctl({"CreatePlaylist"}).object().value("status").toString(), QStringLiteral("Invoked"));
        QTRY_COMPARE(playlists(*m_app).size(), 2);
        const QJsonArray firstBefore = itemsOf(*m_app, 1);
        QCOMPARE(m_app->ctl({"playlists"}).object().value("activePlaylistNumber").toInt(), 1);

        // The second tab, beside the first at the top left of the panel.
        const DropOutcome outcome = dragFilesTo(m_controller.topLeft() + m_items.topLeft() + QPoint(119, -45));
        QVERIFY2(outcome.accepted, "the second tab refused the files");
        QCOMPARE(outcome.dropAction, int(Qt::CopyAction));
        const QString failure = waitForDroppedItems(2, {});
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
        QCOMPARE(m_app->ctl({"playlists"}).object().value("activePlaylistNumber").toInt(), 2);
        QCOMPARE(itemsOf(*m_app, 1), firstBefore);
    }
};

QTEST_GUILESS_MAIN(TestPlaylistDrop)
#include "tst_playlist_drop.moc"
