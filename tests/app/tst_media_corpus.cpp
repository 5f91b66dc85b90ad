// Every kind of file the add dialog offers, added to the built application
// over its control socket: each becomes a ready item of the right type and
// length and plays ON AIR, with a picture on the program window (video and
// stills) and a running position (video and audio).

#include "app_process.h"
#include "media_corpus.h"
#include "x_windows.h"

#include "support/private_pulse_audio.h"
#include "video/private_xvfb.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QStandardPaths>
#include <QtTest>

using namespace tarnix::test;

namespace {

QJsonArray playlistItems(const AppProcess &app)
{
    return app.ctl({"playlists"}).object().value("playlists").toArray().at(0).toObject().value("items").toArray();
}

qint64 stateField(const AppProcess &app, const char *key)
{
    const QJsonValue value = app.state().value(QLatin1String(key));
    return value.isDouble() ? qint64(value.toDouble()) : -1;
}

// The share of the window's pixels that are clearly not black.
double litShare(const QImage &image)
{
    qint64 lit = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            lit += qGray(image.pixel(x, y)) > 40;
    return image.isNull() ? 0.0 : double(lit) / (double(image.width()) * image.height());
}

} // namespace

class TestMediaCorpus : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_files;
    PrivateXvfb m_xvfb;
    PrivatePulseAudio m_pulse;
    QList<CorpusFile> m_corpus = mediaCorpus();

private slots:
    void initTestCase()
    {
        QVERIFY2(!QStandardPaths::findExecutable("ffmpeg").isEmpty(), "ffmpeg is missing (scripts/setup installs it)");
        QVERIFY2(!QStandardPaths::findExecutable("xwd").isEmpty(), "xwd (x11-apps) is missing");
        for (const CorpusFile &file : std::as_const(m_corpus)) {
            const std::optional<QString> failure = generateCorpusFile(QDir(m_files.path()), file);
            QVERIFY2(!failure, qPrintable(failure.value_or(QString())));
        }
        QVERIFY(m_xvfb.start("640x480x24"));
        QString error;
        QVERIFY2(m_pulse.start(&error), qPrintable(error));
    }

    void cleanupTestCase() { m_pulse.stop(); }

    void everyKindIsAddedAndPlaysOnAir()
    {
        QTemporaryDir home;
        AppProcess app(home);
        app.setPulseServer(m_pulse.serverAddress());
        app.setDisplay(qEnvironmentVariable("DISPLAY"));
        QVERIFY2(app.start(), qPrintable(app.console()));
        QVERIFY(QTest::qWaitFor([] { return mapState("TARNIX Program") == "IsViewable"; }, 10000));
        // The controller window opens over the program picture on the one
        // screen there is; it goes aside so that the grabs see the program.
        QVERIFY(QTest::qWaitFor([] { return mapState("TARNIX Controller") == "IsViewable"; }, 10000));
        QVERIFY(moveWindow("TARNIX Controller", 5000, 0));

        QStringList quoted;
        for (const CorpusFile &file : std::as_const(m_corpus))
            quoted << '"' + m_files.filePath(QString::fromLatin1(file.name)) + '"';
        const QString add = QStringLiteral(R"({"action":"AddFiles","args":[{"strings":[%1]}]})").arg(quoted.join(','));
        QCOMPARE(app.ctl({add}).object().value("status").toString(), QStringLiteral("Invoked"));

        QJsonArray items;
        QVERIFY2(QTest::qWaitFor(
                     [&] {
                         items = playlistItems(app);
                         return items.size() == m_corpus.size()
                                && std::all_of(items.begin(), items.end(), [](const QJsonValue &item) {
                                       return item.toObject().value("status") == "ready";
                                   });
                     },
                     60000),
                 qPrintable(QStringLiteral("%1 of %2 items ready; log: %3")
                                .arg(items.size())
                                .arg(m_corpus.size())
                                .arg(app.logMessages().filter("could not be added").join(" | "))));

        QStringList wrong;
        for (int i = 0; i < m_corpus.size(); ++i) {
            const CorpusFile &file = m_corpus.at(i);
            const QJsonObject item = items.at(i).toObject();
            const QString type = item.value("mediaType").toString();
            const QJsonValue duration = item.value("durationMs");
            const bool typeRight = *file.mediaType ? type == QLatin1String(file.mediaType)
                                                   : (type == "video" || type == "stillImage");
            bool durationRight = true;
            if (*file.mediaType && file.durationMs < 0)
                durationRight = duration.isNull();
            else if (file.durationMs >= 0)
                durationRight = qAbs(duration.toInteger(-100000) - file.durationMs) <= 150;
            if (!typeRight || !durationRight)
                wrong << QStringLiteral("%1: %2 %3").arg(QString::fromLatin1(file.name), type,
                                                          duration.isNull() ? "null" : QString::number(duration.toInteger()));
        }
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join("; ")));

        for (int i = 0; i < m_corpus.size(); ++i) {
            const QJsonObject item = items.at(i).toObject();
            const QString id = item.value("id").toString();
            const QString type = item.value("mediaType").toString();
            const QString name = QString::fromLatin1(m_corpus.at(i).name);
            QCOMPARE(app.ctl({QStringLiteral(R"({"action":"SelectItem","args":[{"uint64":"%1"}]})").arg(id)})
                         .object()
                         .value("status")
                         .toString(),
                     QStringLiteral("Invoked"));
            QVERIFY2(QTest::qWaitFor(
                         [&] {
                             if (QString::number(stateField(app, "onAirItemId")) == id)
                                 return true;
                             (void)app.ctl({"TakeSelectedOnAir"});
                             return QTest::qWaitFor(
                                 [&] { return QString::number(stateField(app, "onAirItemId")) == id; }, 1000);
                         },
                         20000),
                     qPrintable(name + " did not go ON AIR"));
            if (type != "stillImage") {
                // Items start paused at their In point; play them. A play
                // pressed while the take still settles is refused: press
                // again, as the operator would.
                QVERIFY2(QTest::qWaitFor(
                             [&] {
                                 if (app.state().value("programPlaying") != true)
                                     (void)app.ctl({"ProgramPlay"});
                                 return QTest::qWaitFor(
                                     [&] { return app.state().value("programPlaying") == true; }, 1000);
                             },
                             10000),
                         qPrintable(name + " does not play"));
                // Played at its own pace: a clip that jumps to its end (as
                // an animated GIF did when all its frames were stamped zero)
                // does not advance.
                const qint64 first = stateField(app, "positionMs");
                qint64 now = first;
                qint64 remaining = -1;
                const bool advanced = QTest::qWaitFor(
                    [&] {
                        now = stateField(app, "positionMs");
                        remaining = stateField(app, "remainingMs");
                        return now > first + 200;
                    },
                    10000);
                QVERIFY2(advanced, qPrintable(QStringLiteral("%1: the position does not advance (from %2 to %3 ms, "
                                                             "%4 ms remaining, playing %5)")
                                                  .arg(name)
                                                  .arg(first)
                                                  .arg(now)
                                                  .arg(remaining)
                                                  .arg(app.state().value("programPlaying").toBool())));
            }
            double share = 0;
            if (type != "audio") {
                QString error;
                QImage grab;
                QVERIFY2(QTest::qWaitFor(
                             [&] {
                                 grab = grabWindow("TARNIX Program", &error);
                                 share = litShare(grab);
                                 return share > 0.2;
                             },
                             10000),
                         qPrintable(QStringLiteral("%1: program picture %2% lit %3")
                                        .arg(name)
                                        .arg(share * 100, 0, 'f', 1)
                                        .arg(error)));
                // For a person looking into a failure: the grabs, by name.
                if (const QString grabs = qEnvironmentVariable("TARNIX_TEST_GRAB_DIR"); !grabs.isEmpty())
                    grab.save(QDir(grabs).filePath(name + ".png"));
            }
            qInfo("%s: %s %s ms, on air, picture %.0f%% lit", qPrintable(name), qPrintable(type),
                  qPrintable(item.value("durationMs").isNull() ? QStringLiteral("-")
                                                               : QString::number(item.value("durationMs").toInteger())),
                  share * 100);
        }
        QCOMPARE(app.terminate(), 0);
    }
};

QTEST_GUILESS_MAIN(TestMediaCorpus)
#include "tst_media_corpus.moc"
