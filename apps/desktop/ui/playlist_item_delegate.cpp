#include "ui/playlist_item_delegate.h"

#include "playlist/playlist_model.h"
#include "playlist/playlist_thumbnail_store.h"
#include "playlist/thumbnail_caption.h"
#include "shell/interface_scale.h"
#include "shell/localized_text.h"
#include "ui/playlist_item_texts.h"
#include "ui/playlist_list_widget.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>

#include <optional>

namespace tarnix::playlist_view {

namespace {

// Colours of the states, the same in every skin; the skin's own are the
// list's PlaylistTileColours.
// Text on a darkened band over the picture, whatever the skin.
const QColor kOverPictureText(0xd4, 0xda, 0xdd);
const QColor kOffline(0xc6, 0x28, 0x28);
const QColor kPendingBar(0x45, 0x4b, 0x4e);
const QColor kProgress(0x5f, 0xc3, 0x6a);
const QColor kFailed(0xed, 0x55, 0x5c);
const QColor kSelection(0x65, 0xa7, 0xd8);
const QColor kReady(0x65, 0xd3, 0x6b);
const QColor kPreparing(0xc9, 0x9a, 0x45);
const QColor kOnAirBadge(0xa9, 0x2e, 0x36);
const QColor kEditBadge(0x37, 0x7c, 0x43);
const QColor kBgmBadge(0x8a, 0x64, 0x29);
const QColor kBgmBadgeText(0xf1, 0xc8, 0x75);
const QColor kDskBadge(0x35, 0x7e, 0xb5);

// Sizes at an interface scale of 1.0 and the standard text size; rows and
// tiles grow with the text they hold, pictures with the interface.
constexpr QSize kTileSize{256, 214};
constexpr int kListRowHeight = 72;
constexpr QSize kListPicture{96, 54};
constexpr int kMargin = 6;

int textScaled(int pixels)
{
    return scaledBy(pixels, interfaceScale() * textSizeFactor());
}

} // namespace

struct PlaylistItemDelegate::Facts {
    PlaylistItem item;
    int row = 0;
    bool onAir = false;
    bool edit = false;
    bool dsk = false;
    bool bgm = false;
    bool cue = false;
    PlaylistCueState cueState = PlaylistCueState::None;
    bool offline = false;
    std::optional<PlaylistPendingState> pending;
    int repeatProgress = 0;
    QImage picture;
    bool pictureWaiting = false;
    QString factsLine;
    double level = 0.0;
    PlaylistTileColours colours;
    QString error;
    bool selected = false;
    bool pressed = false;
    std::optional<double> onAirProgress;  // 0..1
};

PlaylistItemDelegate::PlaylistItemDelegate(PlaylistModel *model, PlaylistThumbnailStore *thumbnails,
                                           const PlaylistItemPaintState *state, QObject *parent)
    : QStyledItemDelegate(parent), m_model(model), m_thumbnails(thumbnails), m_state(state)
{
}

QSize PlaylistItemDelegate::tileSize()
{
    return QSize(scaled(kTileSize.width()), textScaled(kTileSize.height()));
}

int PlaylistItemDelegate::listRowHeight()
{
    return textScaled(kListRowHeight);
}

QSize PlaylistItemDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    if (m_tiles)
        return tileSize();
    return QSize(std::max(option.rect.width(), 200), listRowHeight());
}

PlaylistItemDelegate::Facts PlaylistItemDelegate::factsOf(quint64 itemId, int row) const
{
    Facts facts;
    facts.row = row;
    if (!m_model)
        return facts;
    if (std::optional<PlaylistItem> item = m_model->item(itemId))
        facts.item = std::move(*item);
    facts.onAir = m_model->onAirItemId() == itemId;
    facts.edit = m_model->editItemId() == itemId;
    facts.dsk = m_model->dskItemId() == itemId;
    facts.bgm = m_model->bgmItemId() == itemId;
    facts.cue = m_model->cueItemId() == itemId;
    if (facts.cue)
        facts.cueState = m_model->cueState();
    facts.offline = m_model->isOffline(itemId);
    facts.pending = m_model->pendingState(itemId);
    facts.repeatProgress = m_model->repeatProgress(itemId);
    if (m_thumbnails) {
        facts.picture = m_thumbnails->thumbnail(itemId);
        facts.pictureWaiting = facts.picture.isNull() && m_thumbnails->isWaiting(itemId);
        if (const auto details = m_thumbnails->details(itemId))
            facts.factsLine = thumbnailFactsLine(*details, facts.item.settings.nominalVolumeTenthsDb).mid(1);
    }
    if (facts.factsLine.isEmpty()) {
        const std::optional<qint64> duration = m_model->knownDuration(itemId);
        facts.factsLine = QStringLiteral("RES --  DUR %1  VOL %2  TYPE --")
                              .arg(duration ? itemTimeText(*duration) : QStringLiteral("--"),
                                   itemVolumeText(facts.item.settings.nominalVolumeTenthsDb));
    }
    if (m_state) {
        facts.level = m_state->levels.value(itemId, 0.0);
        facts.error = m_state->errors.value(itemId);
        facts.selected = m_state->selectedItemId == itemId;
    }
    if (facts.onAir) {
        const std::optional<qint64> position = m_model->lastPlayedPosition(itemId);
        const qint64 in = facts.item.settings.inPointMs;
        const std::optional<qint64> out = facts.item.settings.outPointMs ? facts.item.settings.outPointMs
                                                                          : m_model->knownDuration(itemId);
        if (position && out && *out > in)
            facts.onAirProgress = std::clamp(double(*position - in) / double(*out - in), 0.0, 1.0);
    }
    return facts;
}

void PlaylistItemDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const quint64 id = index.data(Qt::UserRole).value<quint64>();
    Facts facts = factsOf(id, index.row() + 1);
    if (const QWidget *view = option.widget) {
        facts.pressed = view->property("pressedTileItemId").value<quint64>() == id && id != 0;
        if (const auto *list = qobject_cast<const PlaylistListWidget *>(view))
            facts.colours = list->tileColours();
    }
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, true);
    if (m_tiles)
        paintTile(painter, option.rect, facts, option);
    else
        paintList(painter, option.rect, facts, option);
    painter->restore();
}

void PlaylistItemDelegate::paintPicture(QPainter *painter, const QRect &rect, const Facts &facts,
                                        bool statusOnBar) const
{
    painter->fillRect(rect, facts.colours.pictureBackground);
    if (!facts.picture.isNull()) {
        const QSize fitted = facts.picture.size().scaled(rect.size(), Qt::KeepAspectRatio);
        const QRect target(rect.center() - QPoint(fitted.width() / 2, fitted.height() / 2), fitted);
        painter->drawImage(target, facts.picture);
    } else {
        painter->setPen(facts.colours.pictureText);
        QFont font = painter->font();
        font.setPointSizeF(font.pointSizeF() * 0.85);
        painter->setFont(font);
        const QString text = facts.pending || facts.offline || !facts.pictureWaiting ? typeBadgeText(facts.item)
                                                                                      : localized("media.generating");
        painter->drawText(rect, Qt::AlignCenter | Qt::TextWordWrap, text);
    }
    if (facts.pending) {
        // Dimmed, with the phase and its progress on a bar at the bottom.
        painter->fillRect(rect, QColor(0, 0, 0, 140));
        const int barHeight = std::min(18, rect.height() / 3);
        const QRect bar(rect.left(), rect.bottom() - barHeight + 1, rect.width(), barHeight);
        painter->fillRect(bar, kPendingBar);
        QRect done = bar;
        done.setWidth(int(bar.width() * std::clamp(facts.pending->progress, 0, 1000) / 1000.0));
        painter->fillRect(done, kProgress);
        if (statusOnBar) {
            painter->setPen(Qt::white);
            QFont font = painter->font();
            font.setPointSizeF(std::max(6.0, font.pointSizeF() * 0.8));
            painter->setFont(font);
            painter->drawText(bar, Qt::AlignCenter, pendingStatusText(*facts.pending));
        }
    }
    if (facts.offline) {
        painter->fillRect(rect, QColor(0, 0, 0, 120));
        painter->setPen(QPen(kOffline, 2));
        painter->drawRect(rect.adjusted(1, 1, -1, -1));
        QFont font = painter->font();
        font.setBold(true);
        // The words fit the picture, small as a list row's is.
        const QString offline = QStringLiteral("MEDIA OFFLINE");
        while (font.pointSizeF() > 5.0 && QFontMetrics(font).horizontalAdvance(offline) > rect.width() - 6)
            font.setPointSizeF(font.pointSizeF() - 0.5);
        painter->setFont(font);
        const QRect label(rect.left(), rect.center().y() - 10, rect.width(), 20);
        painter->fillRect(label, kOffline);
        painter->setPen(Qt::white);
        painter->drawText(label, Qt::AlignCenter, offline);
    }
    if (facts.onAirProgress) {
        const QRect track(rect.left(), rect.bottom() - 3, rect.width(), 4);
        painter->fillRect(track, QColor(0, 0, 0, 160));
        painter->fillRect(QRect(track.left(), track.top(), int(track.width() * *facts.onAirProgress), track.height()),
                          kOnAirBadge.lighter(140));
    }
}

QFont PlaylistItemDelegate::badgeFont(const QFont &base)
{
    QFont font = base;
    font.setBold(true);
    font.setPointSizeF(std::max(6.0, base.pointSizeF() * 0.85));
    return font;
}

QList<PlaylistItemDelegate::Badge> PlaylistItemDelegate::badgesOf(const Facts &facts)
{
    QList<Badge> badges;
    if (facts.onAir)
        badges.append({QStringLiteral("ON AIR"), kOnAirBadge, Qt::white});
    if (facts.edit)
        badges.append({QStringLiteral("EDIT"), kEditBadge, Qt::white});
    if (facts.dsk)
        badges.append({QStringLiteral("DSK"), kDskBadge, Qt::white});
    if (facts.bgm)
        badges.append({QStringLiteral("BGM PLAY"), kBgmBadge, kBgmBadgeText});
    if (facts.cue) {
        switch (facts.cueState) {
        case PlaylistCueState::Ready: badges.append({QStringLiteral("READY"), kReady.darker(160), kReady}); break;
        case PlaylistCueState::Failed: badges.append({QStringLiteral("CUE"), kFailed.darker(160), kFailed}); break;
        case PlaylistCueState::Requested:
        case PlaylistCueState::Preparing:
            badges.append({QStringLiteral("CUE"), kPreparing.darker(170), kPreparing});
            break;
        case PlaylistCueState::None: break;
        }
    }
    return badges;
}

int PlaylistItemDelegate::badgesWidth(const QList<Badge> &badges, const QFontMetrics &metrics)
{
    int width = 0;
    for (const Badge &badge : badges)
        width += metrics.horizontalAdvance(badge.text) + 14;
    return width;
}

void PlaylistItemDelegate::paintBadges(QPainter *painter, const QPoint &topLeft, const QList<Badge> &badges,
                                       const QFont &font) const
{
    painter->setFont(font);
    const QFontMetrics metrics(font);
    int x = topLeft.x();
    const bool framed = m_state && m_state->hardwareSkin;
    for (const Badge &badge : badges) {
        const int width = metrics.horizontalAdvance(badge.text) + 10;
        const QRect box(x, topLeft.y(), width, metrics.height() + 2);
        if (framed) {
            // Studio hardware style: a lit key cap with a darker rim.
            painter->setPen(QPen(badge.background.darker(170), 2));
            painter->setBrush(badge.background);
            painter->drawRoundedRect(box.adjusted(1, 1, -1, -1), 2, 2);
        } else {
            painter->setPen(Qt::NoPen);
            painter->setBrush(badge.background);
            painter->drawRoundedRect(box, 3, 3);
        }
        painter->setPen(badge.foreground);
        painter->drawText(box, Qt::AlignCenter, badge.text);
        x += width + 4;
    }
}

void PlaylistItemDelegate::paintFrameMarks(QPainter *painter, const QRect &rect, const Facts &facts,
                                           const QStyleOptionViewItem &option) const
{
    const QColor tint = itemTintColor(facts.item.color);
    if (tint.isValid())
        painter->fillRect(rect, tint);
    if (facts.pressed)
        painter->fillRect(rect, QColor(255, 255, 255, 40));
    // The picture level of an item on the program, as a strip on its edge.
    if (facts.level > 0.0) {
        const int height = int(rect.height() * std::clamp(facts.level, 0.0, 1.0));
        painter->fillRect(QRect(rect.left(), rect.bottom() - height + 1, 4, height), kOnAirBadge);
    }
    QColor border;
    if (!facts.error.isEmpty() || (facts.cue && facts.cueState == PlaylistCueState::Failed))
        border = kFailed;
    else if (facts.onAir)
        border = kOnAirBadge;
    if (facts.selected || (option.state & QStyle::State_Selected))
        border = kSelection;
    if (border.isValid()) {
        painter->setPen(QPen(border, 2));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(QRectF(rect).adjusted(1, 1, -1, -1));
    }
    if (facts.item.separatorBelow) {
        painter->setPen(QPen(facts.colours.secondText, 2));
        painter->drawLine(rect.left() + 2, rect.bottom(), rect.right() - 2, rect.bottom());
    }
}

void PlaylistItemDelegate::paintList(QPainter *painter, const QRect &rect, const Facts &facts,
                                     const QStyleOptionViewItem &option) const
{
    painter->fillRect(rect, facts.row % 2 ? facts.colours.background : facts.colours.alternateBackground);
    const int margin = scaled(kMargin);
    const QSize pictureSize(scaled(kListPicture.width()), scaled(kListPicture.height()));
    const QRect picture(rect.left() + margin + scaled(4), rect.top() + (rect.height() - pictureSize.height()) / 2,
                        pictureSize.width(), pictureSize.height());
    paintPicture(painter, picture, facts, false);

    const int textLeft = picture.right() + margin * 2;
    const QRect textArea(textLeft, rect.top() + 3, rect.right() - textLeft - margin, rect.height() - 6);
    QFont nameFont = option.font;
    nameFont.setBold(true);
    const QFontMetrics nameMetrics(nameFont);
    QFont smallFont = option.font;
    smallFont.setPointSizeF(std::max(6.0, option.font.pointSizeF() * 0.85));
    const QFontMetrics smallMetrics(smallFont);

    // The type sits at the right of the first line.
    painter->setFont(smallFont);
    const QString type = typeBadgeText(facts.item);
    const int typeWidth = smallMetrics.horizontalAdvance(type) + 10;
    const QRect typeBox(textArea.right() - typeWidth, textArea.top(), typeWidth, smallMetrics.height() + 2);
    painter->setPen(QPen(facts.colours.secondText, 1));
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(typeBox, 3, 3);
    painter->drawText(typeBox, Qt::AlignCenter, type);
    // The state badges follow the name on the first line; a long name
    // gives way to them.
    const QList<Badge> badges = badgesOf(facts);
    const QFont stateFont = badgeFont(option.font);
    const int stateWidth = badgesWidth(badges, QFontMetrics(stateFont));
    const QString name = QStringLiteral("%1  %2").arg(facts.row).arg(facts.item.displayName);
    const int nameRoom = std::max(40, typeBox.left() - 8 - textArea.left() - stateWidth);
    const QString shownName = nameMetrics.elidedText(name, Qt::ElideRight, nameRoom);
    painter->setFont(nameFont);
    painter->setPen(facts.colours.text);
    painter->drawText(QRect(textArea.left(), textArea.top(), nameRoom, nameMetrics.height()),
                      Qt::AlignLeft | Qt::AlignVCenter, shownName);
    paintBadges(painter, QPoint(textArea.left() + nameMetrics.horizontalAdvance(shownName) + 10, textArea.top()),
                badges, stateFont);

    painter->setFont(smallFont);
    painter->setPen(facts.colours.secondText);
    int y = textArea.top() + nameMetrics.height() + 1;
    QStringList lines{modesLineText(facts.item, facts.repeatProgress), pointsLineText(facts.item.settings),
                      facts.factsLine};
    if (facts.pending)
        lines[2] = pendingStatusText(*facts.pending);
    if (!facts.error.isEmpty())
        lines[2] = facts.error.section(QLatin1Char('\n'), 1).replace(QLatin1Char('\n'), QStringLiteral(": "));
    for (int i = 0; i < lines.size(); ++i) {
        if (i == 2 && !facts.error.isEmpty())
            painter->setPen(kFailed);
        painter->drawText(QRect(textArea.left(), y, textArea.width(), smallMetrics.height()),
                          Qt::AlignLeft | Qt::AlignVCenter,
                          smallMetrics.elidedText(lines.at(i), Qt::ElideRight, textArea.width()));
        y += smallMetrics.height();
    }
    paintFrameMarks(painter, rect, facts, option);
}

void PlaylistItemDelegate::paintTile(QPainter *painter, const QRect &rect, const Facts &facts,
                                     const QStyleOptionViewItem &option) const
{
    const QRect tile = rect.adjusted(3, 3, -3, -3);
    painter->fillRect(tile, facts.colours.background);
    const QRect picture(tile.left() + 4, tile.top() + 4, tile.width() - 8, (tile.width() - 8) * 136 / 240);
    paintPicture(painter, picture, facts, true);
    paintBadges(painter, QPoint(picture.left() + 4, picture.top() + 4), badgesOf(facts), badgeFont(option.font));

    QFont smallFont = option.font;
    smallFont.setPointSizeF(std::max(6.0, option.font.pointSizeF() * 0.85));
    const QFontMetrics smallMetrics(smallFont);
    const QString type = typeBadgeText(facts.item);
    painter->setFont(smallFont);
    const int typeWidth = smallMetrics.horizontalAdvance(type) + 10;
    const QRect typeBox(picture.right() - typeWidth - 4, picture.bottom() - smallMetrics.height() - 8, typeWidth,
                        smallMetrics.height() + 2);
    painter->fillRect(typeBox, QColor(0, 0, 0, 160));
    painter->setPen(kOverPictureText);
    painter->drawText(typeBox, Qt::AlignCenter, type);

    QFont nameFont = option.font;
    nameFont.setBold(true);
    const QFontMetrics nameMetrics(nameFont);
    int y = picture.bottom() + 4;
    const int width = tile.width() - 8;
    painter->setFont(nameFont);
    painter->setPen(facts.colours.text);
    const QString name = QStringLiteral("%1  %2").arg(facts.row).arg(facts.item.displayName);
    painter->drawText(QRect(tile.left() + 4, y, width, nameMetrics.height()), Qt::AlignLeft | Qt::AlignVCenter,
                      nameMetrics.elidedText(name, Qt::ElideRight, width));
    y += nameMetrics.height();
    painter->setFont(smallFont);
    painter->setPen(facts.error.isEmpty() ? facts.colours.secondText : kFailed);
    const QString second = facts.error.isEmpty() ? modesLineText(facts.item, facts.repeatProgress)
                                                 : facts.error.section(QLatin1Char('\n'), 1, 1);
    painter->drawText(QRect(tile.left() + 4, y, width, smallMetrics.height()), Qt::AlignLeft | Qt::AlignVCenter,
                      smallMetrics.elidedText(second, Qt::ElideRight, width));
    y += smallMetrics.height();
    painter->setPen(facts.colours.secondText);
    painter->drawText(QRect(tile.left() + 4, y, width, smallMetrics.height()), Qt::AlignLeft | Qt::AlignVCenter,
                      smallMetrics.elidedText(facts.factsLine, Qt::ElideRight, width));
    paintFrameMarks(painter, tile, facts, option);
}

QString PlaylistItemDelegate::toolTip(quint64 itemId) const
{
    if (!m_model)
        return {};
    const std::optional<PlaylistItem> item = m_model->item(itemId);
    if (!item)
        return {};
    QString text = item->displayName + QLatin1Char('\n') + item->filePath;
    if (m_model->isOffline(itemId))
        text += QStringLiteral("\nMEDIA OFFLINE");
    if (const auto pending = m_model->pendingState(itemId))
        text += QLatin1Char('\n') + pendingStatusText(*pending);
    if (m_thumbnails) {
        if (const auto details = m_thumbnails->details(itemId))
            text += thumbnailTooltipLine(*details);
    }
    if (m_state && m_state->errors.contains(itemId))
        text += QLatin1Char('\n') + m_state->errors.value(itemId);
    return text;
}

bool PlaylistItemDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                                     const QModelIndex &index)
{
    if (event && view && event->type() == QEvent::ToolTip && index.isValid()) {
        QToolTip::showText(event->globalPos(), toolTip(index.data(Qt::UserRole).value<quint64>()), view);
        return true;
    }
    return QStyledItemDelegate::helpEvent(event, view, option, index);
}

} // namespace tarnix::playlist_view
