#pragma once

#include "playlist/playlist_enums.h"
#include "playlist/playlist_model.h"

#include <QPointer>
#include <QString>

#include <optional>

namespace tarnix {

// Where one layer's item stands on air, read against the live item of the
// model so that an edit made while it plays counts at its end.
class PlayoutItemState
{
public:
    enum Phase { Idle = 0, Loaded = 1, Running = 2, Held = 3, Failed = 4, Invalid = 5 };
    static constexpr int kMaxRepeats = 9999;

    explicit PlayoutItemState(PlaylistModel *model = nullptr) : m_model(model) {}

    void setModel(PlaylistModel *model) { m_model = model; }

    bool load(quint64 itemId);
    std::optional<PlaylistStartMode> startMode();
    std::optional<PlaylistEndMode> endMode() const;
    std::optional<PlaylistEndMode> consumeEndMode();
    void setRunning();
    void setHeld();
    void setLoaded();
    void setFailed();
    void clear();
    int repeatDisplayCount() const;

    Phase phase() const { return m_phase; }
    quint64 itemId() const { return m_itemId; }
    QString filePath() const { return m_filePath; }
    qint64 inPointMs() const { return m_inPointMs; }
    std::optional<qint64> outPointMs() const { return m_outPointMs; }
    int repeatsDone() const { return m_repeatsDone; }

private:
    bool usable() const { return m_phase != Idle && m_phase != Invalid; }
    void clearSnapshot();

    QPointer<PlaylistModel> m_model;
    Phase m_phase = Idle;
    quint64 m_itemId = 0;
    QString m_filePath;
    qint64 m_inPointMs = 0;
    std::optional<qint64> m_outPointMs;
    int m_repeatsDone = 0;
};

// The end mode that stands for a repeat's end mode once its repeats are done.
PlaylistEndMode endModeAfterRepeats(PlaylistRepeatEndMode mode);

} // namespace tarnix
