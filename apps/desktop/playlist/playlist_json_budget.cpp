#include "playlist/playlist_json_budget.h"

#include <QJsonArray>
#include <QJsonObject>

#include <vector>

namespace tarnix {
namespace {

using namespace playlist_document_limits;

struct StringBudget {
    qint64 total = 0;

    bool charge(qsizetype length, QString *error)
    {
        if (length > maxStringChars) {
            if (error)
                *error = QStringLiteral("Playlist JSON string exceeds %1 characters.").arg(maxStringChars);
            return false;
        }
        total += length;
        if (total > maxTotalStringChars) {
            if (error)
                *error = QStringLiteral("Playlist JSON strings exceed %1 characters in total.")
                             .arg(maxTotalStringChars);
            return false;
        }
        return true;
    }
};

QString valuesText()
{
    return QStringLiteral("Playlist JSON exceeds %1 values.").arg(maxValues);
}

} // namespace

bool playlistCancelled(const PlaylistCancelFlag &cancelFlag, QString *error)
{
    if (!cancelFlag || !cancelFlag->load(std::memory_order_relaxed))
        return false;
    if (error)
        *error = QStringLiteral("Playlist import was cancelled.");
    return true;
}

bool walkPlaylistJsonBudget(const QJsonValue &root, QString *error, const PlaylistCancelFlag &cancelFlag)
{
    std::vector<QJsonValue> stack;
    stack.push_back(root);
    qint64 visited = 0;
    StringBudget budget;
    while (!stack.empty()) {
        if (playlistCancelled(cancelFlag, error))
            return false;
        if (++visited > maxValues) {
            if (error)
                *error = valuesText();
            return false;
        }
        const QJsonValue value = std::move(stack.back());
        stack.pop_back();
        const auto room = [&] { return maxValues - static_cast<qint64>(stack.size()) - visited; };
        switch (value.type()) {
        case QJsonValue::String:
            if (!budget.charge(value.toString().size(), error))
                return false;
            break;
        case QJsonValue::Array: {
            const QJsonArray array = value.toArray();
            if (array.size() > room()) {
                if (error)
                    *error = valuesText();
                return false;
            }
            for (const QJsonValue &element : array)
                stack.push_back(element);
            break;
        }
        case QJsonValue::Object: {
            const QJsonObject object = value.toObject();
            if (object.size() > room()) {
                if (error)
                    *error = valuesText();
                return false;
            }
            for (auto it = object.begin(); it != object.end(); ++it) {
                if (!budget.charge(it.key().size(), error))
                    return false;
                stack.push_back(it.value());
            }
            break;
        }
        default:
            break;
        }
    }
    return true;
}

} // namespace tarnix
