// Fuzz entry for the playlist document reader. Besides "no crash, no hang,
// no leak" it checks the promise that what the application saves always
// loads again: a document that is accepted and fits the writer's own check
// must read back and write out byte for byte the same.

#include "playlist/playlist_document.h"
#include "playlist/playlist_document_check.h"
#include "playlist/playlist_json_budget.h"
#include "playlist/playlist_json_writer.h"

#include <QJsonDocument>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace tarnix;
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data),
                                                     static_cast<qsizetype>(size));
    QString error;
    const auto document = parsePlaylistDocument(bytes, &error);
    if (!document || !validatePlaylistDocument(*document, &error))
        return 0;
    // The direct text writer must say what Qt's writer says of the tree,
    // and its counts must agree with the reader's walk.
    const QJsonObject tree = playlistDocumentObject(*document);
    const PlaylistJsonText text = writePlaylistJsonText(*document);
    if (text.bytes != QJsonDocument(tree).toJson(QJsonDocument::Indented)) {
        std::fprintf(stderr, "text writer differs from the JSON tree's text\n");
        std::abort();
    }
    using namespace playlist_document_limits;
    const bool withinBudgets = text.values <= maxValues && text.stringChars <= maxTotalStringChars
        && text.longestString <= maxStringChars;
    if (withinBudgets != walkPlaylistJsonBudget(tree, nullptr, {})) {
        std::fprintf(stderr, "written counts disagree with the reader's walk\n");
        std::abort();
    }
    const auto saved = serializeCheckedPlaylistDocument(*document, &error);
    if (!saved)
        return 0;
    const auto reread = parsePlaylistDocument(*saved, &error);
    if (!reread || !validatePlaylistDocument(*reread, &error)) {
        std::fprintf(stderr, "saved document does not load again: %s\n", qPrintable(error));
        std::abort();
    }
    if (serializePlaylistDocument(*reread) != *saved) {
        std::fprintf(stderr, "second save differs from the first\n");
        std::abort();
    }
    return 0;
}
