#include "playlist/playlist_json_writer.h"

#include "playlist/macro_json.h"
#include "playlist/playlist_text.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <vector>

namespace tarnix {
namespace {

// Writes members in QJsonObject's order whatever order the code lists them:
// `keys` in any order, `order()` the indices sorted by key.
template <std::size_t N>
struct KeySet {
    std::array<QLatin1StringView, N> keys;
    std::array<int, N> sorted{};

    constexpr explicit KeySet(std::array<QLatin1StringView, N> k) : keys(k)
    {
        for (std::size_t i = 0; i < N; ++i)
            sorted[i] = static_cast<int>(i);
        std::sort(sorted.begin(), sorted.end(), [&](int a, int b) { return keys[a] < keys[b]; });
    }
};

class TextWriter
{
public:
    PlaylistJsonText result;

    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    void beginArray() { open('['); }
    void endArray() { close(']'); }

    void key(QLatin1StringView name)
    {
        separate();
        result.bytes += '"';
        result.bytes.append(name.data(), name.size());
        result.bytes += "\": ";
        chargeString(name.size());
        m_afterKey = true;
    }

    void string(const QString &text)
    {
        scalar();
        chargeString(text.size());
        appendEscaped(text);
    }
    void integer(qint64 value)
    {
        scalar();
        result.bytes += QByteArray::number(value);
    }
    void boolean(bool value)
    {
        scalar();
        result.bytes += value ? "true" : "false";
    }
    void null()
    {
        scalar();
        result.bytes += "null";
    }

    // Any JSON value, in Qt's own spelling, for the few values whose
    // content is free (a macro patch, a double).
    void value(const QJsonValue &v)
    {
        prepareValue();
        countTree(v);
        QByteArray text;
        if (v.isObject()) {
            text = QJsonDocument(v.toObject()).toJson(QJsonDocument::Indented);
        } else if (v.isArray()) {
            text = QJsonDocument(v.toArray()).toJson(QJsonDocument::Indented);
        } else {
            text = QJsonDocument(QJsonArray{v}).toJson(QJsonDocument::Compact);
            text = text.mid(1, text.size() - 2);
        }
        if (text.endsWith('\n'))
            text.chop(1);
        text.replace("\n", "\n" + indentText(depth()));
        result.bytes += text;
    }

    void finish() { result.bytes += '\n'; }

private:
    struct Frame {
        bool empty = true;
        bool object = false;
    };
    std::vector<Frame> m_frames;
    bool m_afterKey = false;

    int depth() const { return static_cast<int>(m_frames.size()); }
    static QByteArray indentText(int level) { return QByteArray(level * 4, ' '); }

    void chargeString(qsizetype length)
    {
        result.stringChars += length;
        result.longestString = std::max(result.longestString, length);
    }

    // A value inside an array needs its separator; after a key it has one.
    void prepareValue()
    {
        ++result.values;
        if (m_afterKey) {
            m_afterKey = false;
            return;
        }
        if (!m_frames.empty())
            separate();
    }
    void separate()
    {
        Frame &frame = m_frames.back();
        if (!frame.empty)
            result.bytes += ',';
        result.bytes += '\n';
        result.bytes += indentText(depth());
        frame.empty = false;
    }
    void scalar() { prepareValue(); }
    void open(char bracket)
    {
        prepareValue();
        result.bytes += bracket;
        m_frames.push_back({true, bracket == '{'});
    }
    void close(char bracket)
    {
        m_frames.pop_back();
        result.bytes += '\n';
        result.bytes += indentText(depth());
        result.bytes += bracket;
    }

    void countTree(const QJsonValue &root)
    {
        std::vector<QJsonValue> stack{root};
        while (!stack.empty()) {
            const QJsonValue v = std::move(stack.back());
            stack.pop_back();
            ++result.values;
            if (v.isString()) {
                chargeString(v.toString().size());
            } else if (v.isArray()) {
                for (const QJsonValue &e : v.toArray())
                    stack.push_back(e);
            } else if (v.isObject()) {
                const QJsonObject o = v.toObject();
                for (auto it = o.begin(); it != o.end(); ++it) {
                    chargeString(it.key().size());
                    stack.push_back(it.value());
                }
            }
        }
        --result.values;  // prepareValue() counted the root already
    }

    void appendEscaped(const QString &text)
    {
        static constexpr char hex[] = "0123456789abcdef";
        QByteArray &out = result.bytes;
        out += '"';
        const char16_t *p = reinterpret_cast<const char16_t *>(text.utf16());
        const qsizetype n = text.size();
        auto escapeUnit = [&](char16_t u) {
            out += "\\u";
            out += hex[(u >> 12) & 0xf];
            out += hex[(u >> 8) & 0xf];
            out += hex[(u >> 4) & 0xf];
            out += hex[u & 0xf];
        };
        for (qsizetype i = 0; i < n; ++i) {
            const char16_t u = p[i];
            if (u < 0x80) {
                switch (u) {
                case '"': out += "\\\""; break;
                case '\\': out += "\\\\"; break;
                case '\b': out += "\\b"; break;
                case '\t': out += "\\t"; break;
                case '\n': out += "\\n"; break;
                case '\f': out += "\\f"; break;
                case '\r': out += "\\r"; break;
                default:
                    if (u < 0x20)
                        escapeUnit(u);
                    else
                        out += char(u);
                }
            } else if (u < 0x800) {
                out += char(0xc0 | (u >> 6));
                out += char(0x80 | (u & 0x3f));
            } else if (QChar::isHighSurrogate(u) && i + 1 < n && QChar::isLowSurrogate(p[i + 1])) {
                const char32_t c = QChar::surrogateToUcs4(u, p[i + 1]);
                ++i;
                out += char(0xf0 | (c >> 18));
                out += char(0x80 | ((c >> 12) & 0x3f));
                out += char(0x80 | ((c >> 6) & 0x3f));
                out += char(0x80 | (c & 0x3f));
            } else if (QChar::isSurrogate(u)) {
                escapeUnit(u);
            } else {
                out += char(0xe0 | (u >> 12));
                out += char(0x80 | ((u >> 6) & 0x3f));
                out += char(0x80 | (u & 0x3f));
            }
        }
        out += '"';
    }
};

using L = QLatin1StringView;

void writeFade(TextWriter &w, const PlaylistFadeSetting &fade)
{
    static const KeySet<2> keys({L("enabled"), L("durationMs")});
    w.beginObject();
    for (int k : keys.sorted) {
        w.key(keys.keys[k]);
        if (k == 0)
            w.boolean(fade.enabled);
        else
            w.integer(fade.durationMs);
    }
    w.endObject();
}

void writeSettings(TextWriter &w, const PlaylistItemSettings &s)
{
    static const KeySet<15> keys({L("inPointMs"), L("outPointMs"), L("startMode"), L("endMode"), L("fadeIn"),
                                  L("fadeOut"), L("endCrossfade"), L("gotoTargetItemId"), L("repeatCount"),
                                  L("repeatEndMode"), L("nominalVolumeTenthsDb"), L("nominalAudioDelayFrames"),
                                  L("nominalEqLowTenthsDb"), L("nominalEqMidTenthsDb"), L("nominalEqHighTenthsDb")});
    w.beginObject();
    for (int k : keys.sorted) {
        w.key(keys.keys[k]);
        switch (k) {
        case 0: w.integer(s.inPointMs); break;
        case 1: s.outPointMs ? w.integer(*s.outPointMs) : w.null(); break;
        case 2: w.string(toText(s.startMode)); break;
        case 3: w.string(toText(s.endMode)); break;
        case 4: writeFade(w, s.fadeIn); break;
        case 5: writeFade(w, s.fadeOut); break;
        case 6: writeFade(w, s.endCrossfade); break;
        case 7: s.gotoTargetItemId ? w.string(QString::number(s.gotoTargetItemId)) : w.null(); break;
        case 8: s.repeatCount ? w.integer(s.repeatCount) : w.null(); break;
        case 9: w.string(toText(s.repeatEndMode)); break;
        case 10: w.integer(s.nominalVolumeTenthsDb); break;
        case 11: w.integer(s.nominalAudioDelayFrames); break;
        case 12: w.integer(s.nominalEqLowTenthsDb); break;
        case 13: w.integer(s.nominalEqMidTenthsDb); break;
        case 14: w.integer(s.nominalEqHighTenthsDb); break;
        }
    }
    w.endObject();
}

void writeItem(TextWriter &w, const PlaylistItem &item)
{
    static const KeySet<9> keys({L("id"), L("filePath"), L("displayName"), L("sourceType"), L("mediaType"),
                                 L("powerPointMode"), L("color"), L("separatorBelow"), L("settings")});
    w.beginObject();
    for (int k : keys.sorted) {
        if (k == 5 && item.powerPointMode == PlaylistPowerPointMode::none)
            continue;
        w.key(keys.keys[k]);
        switch (k) {
        case 0: w.string(QString::number(item.id)); break;
        case 1: w.string(item.filePath); break;
        case 2: w.string(item.displayName); break;
        case 3: w.string(toText(item.sourceType)); break;
        case 4: w.string(toText(item.mediaType)); break;
        case 5: w.string(toText(item.powerPointMode)); break;
        case 6: w.string(toText(item.color)); break;
        case 7: w.boolean(item.separatorBelow); break;
        case 8: writeSettings(w, item.settings); break;
        }
    }
    w.endObject();
}

void writeStep(TextWriter &w, const MacroStep &step)
{
    static const KeySet<14> keys({L("id"), L("enabled"), L("type"), L("itemId"), L("documentId"), L("label"),
                                  L("scheduledAt"), L("durationMs"), L("requireReady"), L("crossfade"),
                                  L("crossfadeDurationMs"), L("settingsPatch"), L("operation"), L("value")});
    w.beginObject();
    for (int k : keys.sorted) {
        w.key(keys.keys[k]);
        switch (k) {
        case 0: w.string(step.id); break;
        case 1: w.boolean(step.enabled); break;
        case 2: w.string(toText(step.type)); break;
        case 3: w.string(QString::number(step.itemId)); break;
        case 4: w.string(step.documentId); break;
        case 5: w.string(step.label); break;
        case 6:
            step.scheduledAt.isValid() ? w.string(step.scheduledAt.toString(Qt::ISODateWithMs)) : w.null();
            break;
        case 7: w.integer(step.durationMs); break;
        case 8: w.boolean(step.requireReady); break;
        case 9: w.boolean(step.crossfade); break;
        case 10: w.integer(step.crossfadeDurationMs); break;
        case 11: w.value(step.settingsPatch); break;
        case 12: w.string(step.operation); break;
        case 13: w.value(QJsonValue(step.value)); break;
        }
    }
    w.endObject();
}

void writeMacro(TextWriter &w, const MacroDefinition &macro)
{
    static const KeySet<4> keys({L("version"), L("id"), L("name"), L("steps")});
    w.beginObject();
    for (int k : keys.sorted) {
        w.key(keys.keys[k]);
        switch (k) {
        case 0: w.integer(1); break;
        case 1: w.string(macro.id); break;
        case 2: w.string(macro.name); break;
        case 3:
            w.beginArray();
            for (const MacroStep &step : macro.steps)
                writeStep(w, step);
            w.endArray();
            break;
        }
    }
    w.endObject();
}

void writePlaylist(TextWriter &w, const Playlist &playlist, const QList<const PlaylistItem *> &items)
{
    static const KeySet<5> keys({L("number"), L("name"), L("mode"), L("manualCrossfadeEnabled"), L("items")});
    w.beginObject();
    for (int k : keys.sorted) {
        w.key(keys.keys[k]);
        switch (k) {
        case 0: w.integer(playlist.number); break;
        case 1: w.string(playlist.name); break;
        case 2: w.string(toText(playlist.mode)); break;
        case 3: w.boolean(playlist.manualCrossfadeEnabled); break;
        case 4:
            w.beginArray();
            for (const PlaylistItem *item : items)
                writeItem(w, *item);
            w.endArray();
            break;
        }
    }
    w.endObject();
}

QJsonObject fadeObject(const PlaylistFadeSetting &fade)
{
    return QJsonObject{{"enabled", fade.enabled}, {"durationMs", fade.durationMs}};
}

QJsonObject settingsObject(const PlaylistItemSettings &s)
{
    QJsonObject o;
    o.insert(L("inPointMs"), s.inPointMs);
    o.insert(L("outPointMs"), s.outPointMs ? QJsonValue(*s.outPointMs) : QJsonValue());
    o.insert(L("startMode"), toText(s.startMode));
    o.insert(L("endMode"), toText(s.endMode));
    o.insert(L("fadeIn"), fadeObject(s.fadeIn));
    o.insert(L("fadeOut"), fadeObject(s.fadeOut));
    o.insert(L("endCrossfade"), fadeObject(s.endCrossfade));
    o.insert(L("gotoTargetItemId"),
             s.gotoTargetItemId ? QJsonValue(QString::number(s.gotoTargetItemId)) : QJsonValue());
    // The model keeps 0 for "no count"; the document's lower bound is 1.
    o.insert(L("repeatCount"), s.repeatCount ? QJsonValue(s.repeatCount) : QJsonValue());
    o.insert(L("repeatEndMode"), toText(s.repeatEndMode));
    o.insert(L("nominalVolumeTenthsDb"), s.nominalVolumeTenthsDb);
    o.insert(L("nominalAudioDelayFrames"), s.nominalAudioDelayFrames);
    o.insert(L("nominalEqLowTenthsDb"), s.nominalEqLowTenthsDb);
    o.insert(L("nominalEqMidTenthsDb"), s.nominalEqMidTenthsDb);
    o.insert(L("nominalEqHighTenthsDb"), s.nominalEqHighTenthsDb);
    return o;
}

QJsonObject itemObject(const PlaylistItem &item)
{
    QJsonObject o;
    o.insert(L("id"), QString::number(item.id));
    o.insert(L("filePath"), item.filePath);
    o.insert(L("displayName"), item.displayName);
    o.insert(L("sourceType"), toText(item.sourceType));
    o.insert(L("mediaType"), toText(item.mediaType));
    if (item.powerPointMode != PlaylistPowerPointMode::none)
        o.insert(L("powerPointMode"), toText(item.powerPointMode));
    o.insert(L("color"), toText(item.color));
    o.insert(L("separatorBelow"), item.separatorBelow);
    o.insert(L("settings"), settingsObject(item.settings));
    return o;
}

} // namespace

PlaylistJsonText writePlaylistJsonText(const PlaylistDocument &document)
{
    // Items by playlist, in list order.
    QHash<qint32, QList<const PlaylistItem *>> itemsByPlaylist;
    for (const PlaylistItem &item : document.items)
        itemsByPlaylist[item.playlistNumber].append(&item);

    static const KeySet<8> keys({L("format"), L("version"), L("documentId"), L("nextItemId"), L("macros"),
                                 L("activePlaylistNumber"), L("playlists"), L("manualCrossfadeDurationMs")});
    TextWriter w;
    w.result.bytes.reserve(1024 + document.items.size() * 1500);
    w.beginObject();
    for (int k : keys.sorted) {
        w.key(keys.keys[k]);
        switch (k) {
        case 0: w.string(QStringLiteral("tarnix-playlist")); break;
        case 1: w.integer(1); break;
        case 2: w.string(document.documentId); break;
        case 3: w.string(QString::number(document.nextItemId)); break;
        case 4:
            w.beginArray();
            for (const MacroDefinition &macro : document.macros)
                writeMacro(w, macro);
            w.endArray();
            break;
        case 5: w.integer(document.activePlaylistNumber); break;
        case 6:
            w.beginArray();
            for (const Playlist &playlist : document.playlists)
                writePlaylist(w, playlist, itemsByPlaylist.value(playlist.number));
            w.endArray();
            break;
        case 7: w.integer(document.manualCrossfadeDurationMs); break;
        }
    }
    w.endObject();
    w.finish();
    return std::move(w.result);
}

QJsonObject playlistDocumentObject(const PlaylistDocument &document)
{
    QHash<qint32, QJsonArray> itemsByPlaylist;
    for (const PlaylistItem &item : document.items)
        itemsByPlaylist[item.playlistNumber].append(itemObject(item));
    QJsonArray playlists;
    for (const Playlist &playlist : document.playlists) {
        QJsonObject o;
        o.insert(L("number"), playlist.number);
        o.insert(L("name"), playlist.name);
        o.insert(L("mode"), toText(playlist.mode));
        o.insert(L("manualCrossfadeEnabled"), playlist.manualCrossfadeEnabled);
        o.insert(L("items"), itemsByPlaylist.value(playlist.number));
        playlists.append(o);
    }
    QJsonObject root;
    root.insert(L("format"), QStringLiteral("tarnix-playlist"));
    root.insert(L("version"), 1);
    root.insert(L("documentId"), document.documentId);
    root.insert(L("nextItemId"), QString::number(document.nextItemId));
    root.insert(L("macros"), writeMacros(document.macros));
    root.insert(L("activePlaylistNumber"), document.activePlaylistNumber);
    root.insert(L("playlists"), playlists);
    root.insert(L("manualCrossfadeDurationMs"), document.manualCrossfadeDurationMs);
    return root;
}

} // namespace tarnix
