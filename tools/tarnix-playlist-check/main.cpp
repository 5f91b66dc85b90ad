// Loads a playlist document exactly as an import does (read, parse, validate,
// file checks) and says whether the application would accept it.
//
//   tarnix-playlist-check FILE [--rewrite OUT]
//
// Exit 0 with "OK playlists=N items=M macros=K" on standard output; exit 1
// with the application's error text on standard error; exit 2 for a wrong
// command line. Missing media files and macro steps whose targets are
// missing do not refuse a document; they are listed on standard error.
// --rewrite writes the loaded document back with the application's writer.

#include "playlist/macro_json.h"
#include "playlist/playlist_document.h"

#include <QCoreApplication>
#include <QSet>
#include <QStringList>
#include <QTextStream>

#include <algorithm>

using namespace tarnix;

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    const QStringList args = app.arguments().mid(1);
    const bool rewrite = args.size() == 3 && args[1] == u"--rewrite";
    if (args.size() != 1 && !rewrite) {
        err << "usage: tarnix-playlist-check FILE [--rewrite OUT]\n";
        return 2;
    }

    QString error;
    const auto loaded = loadPlaylistFile(args[0], &error);
    if (!loaded) {
        err << error << '\n';
        return 1;
    }
    const PlaylistDocument &document = loaded->document;
    QList<quint64> missing(loaded->missingItems.cbegin(), loaded->missingItems.cend());
    std::sort(missing.begin(), missing.end());
    for (quint64 id : missing) {
        const auto item = std::find_if(document.items.cbegin(), document.items.cend(),
                                       [id](const PlaylistItem &i) { return i.id == id; });
        err << "MEDIA OFFLINE " << id << ' ' << item->filePath << '\n';
    }
    QSet<quint64> ids;
    for (const PlaylistItem &item : document.items)
        ids.insert(item.id);
    for (const QString &problem : macroReferenceProblems(document.macros, document.documentId, ids))
        err << problem << '\n';

    if (rewrite && !writePlaylistFile(args[2], document, &error)) {
        err << error << '\n';
        return 1;
    }
    out << "OK playlists=" << document.playlists.size() << " items=" << document.items.size()
        << " macros=" << document.macros.size() << '\n';
    return 0;
}
