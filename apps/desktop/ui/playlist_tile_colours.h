#pragma once

#include <QColor>

namespace tarnix {

// The colours of an item's row or tile that belong to the skin: ground,
// texts and the picture's stand-in. The colours of the states (ON AIR,
// ready, offline, failed) mean the same in every skin and stay with the
// painter. The defaults are the dark look used without a skin.
struct PlaylistTileColours {
    QColor background{0x1d, 0x21, 0x24};
    QColor alternateBackground{0x22, 0x26, 0x29};
    QColor text{0xd4, 0xda, 0xdd};
    QColor secondText{0x87, 0x90, 0x95};
    QColor pictureBackground{0x2b, 0x30, 0x33};
    QColor pictureText{0x8b, 0x94, 0x99};
};

} // namespace tarnix
