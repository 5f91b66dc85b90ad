#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct Run {
    int exitCode = -1;
    QString out;
    QString err;
};

Run check(const QStringList &args)
{
    QProcess process;
    process.start(QStringLiteral(TARNIX_PLAYLIST_CHECK), args);
    Run run;
    if (!process.waitForFinished(30000))
        return run;
    run.exitCode = process.exitCode();
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

QByteArray contents(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

// The show-file check that operators run before going on air.
class TestPlaylistCheckTool : public QObject {
    Q_OBJECT
    QTemporaryDir dir;
    const QString corpus = QStringLiteral(TARNIX_FUZZ_CORPUS);

private slots:
    void acceptsAndRewritesByteIdentically()
    {
        const QString first = dir.filePath("first.json");
        const QString second = dir.filePath("second.json");
        Run run = check({corpus + "/every-field.json", "--rewrite", first});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.out, "OK playlists=2 items=6 macros=1\n");
        QVERIFY(run.err.contains("MEDIA OFFLINE 1 /media/clip1.mp4\n"));
        run = check({first, "--rewrite", second});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(contents(second), contents(first));
    }

    void refusalIsTheReadersText()
    {
        Run run = check({corpus + "/duplicate-id.json"});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(run.out, "");
        QCOMPARE(run.err, "Playlist item ID 1 is duplicated.\n");
        run = check({dir.filePath("absent.json")});
        QCOMPARE(run.exitCode, 1);
        QVERIFY(run.err.startsWith("Could not open the playlist file:\n"));
        QCOMPARE(check({}).exitCode, 2);
        QCOMPARE(check({"a", "--rewrite"}).exitCode, 2);
    }
};

QTEST_GUILESS_MAIN(TestPlaylistCheckTool)
#include "tst_playlist_check_tool.moc"
