#include "shell/controller_skin.h"

#include "shell/interface_scale.h"
#include "shell/log_categories.h"

#include <QApplication>
#include <QColor>
#include <QFile>
#include <QWidget>

namespace tarnix {

namespace {

QString &currentSkinKey()
{
    static QString key;
    return key;
}

bool identifierCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char('-') || c == QLatin1Char('#');
}

bool digitAt(const QString &text, qsizetype i)
{
    return i < text.size() && text.at(i).isDigit();
}

// Index just past a construct that runs from `from` to the first `close`
// (inclusive), or the text's end.
qsizetype pastClosing(const QString &text, qsizetype from, QLatin1String close)
{
    const qsizetype end = text.indexOf(close, from);
    return end < 0 ? text.size() : end + close.size();
}

qsizetype pastQuoted(const QString &text, qsizetype from)
{
    const QChar quote = text.at(from);
    qsizetype i = from + 1;
    while (i < text.size() && text.at(i) != quote)
        i += text.at(i) == QLatin1Char('\\') ? 2 : 1;
    return std::min(i + 1, text.size());
}

void setPaletteColours(QPalette &palette, QPalette::ColorGroup group, const char *window, const char *windowText,
                       const char *base, const char *alternateBase, const char *text, const char *button,
                       const char *buttonText)
{
    palette.setColor(group, QPalette::Window, QColor(window));
    palette.setColor(group, QPalette::WindowText, QColor(windowText));
    palette.setColor(group, QPalette::Base, QColor(base));
    palette.setColor(group, QPalette::AlternateBase, QColor(alternateBase));
    palette.setColor(group, QPalette::Text, QColor(text));
    palette.setColor(group, QPalette::Button, QColor(button));
    palette.setColor(group, QPalette::ButtonText, QColor(buttonText));
}

} // namespace

const QList<ControllerSkin> &controllerSkins()
{
    static const QList<ControllerSkin> table = {
        {QStringLiteral("hardware"), QStringLiteral("Studio Hardware"),
         {QStringLiteral(":/tarnix/apps/desktop/skins/hardware/controller.qss")}, true, QStringLiteral("hardware")},
        {QStringLiteral("material-dark"), QStringLiteral("Material Dark"),
         {QStringLiteral(":/tarnix/apps/desktop/skins/material-dark/controller.qss")}, false,
         QStringLiteral("material-dark")},
        {QStringLiteral("tarnix-clasic"), QStringLiteral("TARNIX Clasic"),
         {QStringLiteral(":/tarnix/apps/desktop/skins/tarnix-clasic/controller.qss")}, false,
         QStringLiteral("tarnix-clasic")},
    };
    return table;
}

QString defaultControllerSkin()
{
    return controllerSkins().first().key;
}

const ControllerSkin *findControllerSkin(const QString &key)
{
    for (const ControllerSkin &skin : controllerSkins()) {
        if (skin.key == key)
            return &skin;
    }
    return nullptr;
}

QString currentControllerSkin()
{
    return currentSkinKey();
}

QPalette controllerSkinPalette(const QString &paletteId)
{
    QPalette palette;
    if (paletteId == QLatin1String("tarnix-clasic")) {
        // Light grey chrome, white fields, navy selection.
        setPaletteColours(palette, QPalette::Active, "#d6d3cc", "#15171a", "#ffffff", "#f1efea", "#15171a", "#e2dfd8",
                          "#15171a");
        setPaletteColours(palette, QPalette::Inactive, "#d6d3cc", "#15171a", "#ffffff", "#f1efea", "#15171a", "#e2dfd8",
                          "#15171a");
        setPaletteColours(palette, QPalette::Disabled, "#d6d3cc", "#8a8780", "#ecebe7", "#ecebe7", "#8a8780", "#dcd9d2",
                          "#8a8780");
        palette.setColor(QPalette::Highlight, QColor("#1c3f8c"));
        palette.setColor(QPalette::HighlightedText, QColor("#ffffff"));
        palette.setColor(QPalette::Light, QColor("#ffffff"));
        palette.setColor(QPalette::Midlight, QColor("#ebe8e2"));
        palette.setColor(QPalette::Mid, QColor("#a7a39b"));
        palette.setColor(QPalette::Dark, QColor("#7d7a73"));
        palette.setColor(QPalette::Shadow, QColor("#3a3935"));
        palette.setColor(QPalette::ToolTipBase, QColor("#fffbe0"));
        palette.setColor(QPalette::ToolTipText, QColor("#15171a"));
        palette.setColor(QPalette::PlaceholderText, QColor("#77746d"));
        palette.setColor(QPalette::Link, QColor("#1c3f8c"));
        palette.setColor(QPalette::BrightText, QColor("#b3261e"));
        return palette;
    }
    if (paletteId == QLatin1String("material-dark")) {
        // Flat dark surfaces with one light-blue accent.
        setPaletteColours(palette, QPalette::Active, "#121212", "#e6e6e6", "#111318", "#1a1c21", "#e6e6e6", "#23252b",
                          "#e6e6e6");
        setPaletteColours(palette, QPalette::Inactive, "#121212", "#e6e6e6", "#111318", "#1a1c21", "#e6e6e6", "#23252b",
                          "#e6e6e6");
        setPaletteColours(palette, QPalette::Disabled, "#121212", "#6b6e75", "#15171b", "#15171b", "#6b6e75", "#1c1e22",
                          "#6b6e75");
        palette.setColor(QPalette::Highlight, QColor("#3d6fb6"));
        palette.setColor(QPalette::HighlightedText, QColor("#ffffff"));
        palette.setColor(QPalette::Light, QColor("#3a3d44"));
        palette.setColor(QPalette::Midlight, QColor("#2c2f35"));
        palette.setColor(QPalette::Mid, QColor("#1e2025"));
        palette.setColor(QPalette::Dark, QColor("#0b0c0f"));
        palette.setColor(QPalette::Shadow, QColor("#000000"));
        palette.setColor(QPalette::ToolTipBase, QColor("#2c2f35"));
        palette.setColor(QPalette::ToolTipText, QColor("#e6e6e6"));
        palette.setColor(QPalette::PlaceholderText, QColor("#80848c"));
        palette.setColor(QPalette::Link, QColor("#8ab4f8"));
        palette.setColor(QPalette::BrightText, QColor("#ff8a80"));
        return palette;
    }
    // Studio hardware: dark anodised panels, amber selection.
    setPaletteColours(palette, QPalette::Active, "#1c1e23", "#d9dce2", "#111318", "#181a20", "#e3e5ea", "#2b2e35",
                      "#e3e5ea");
    setPaletteColours(palette, QPalette::Inactive, "#1c1e23", "#d9dce2", "#111318", "#181a20", "#e3e5ea", "#2b2e35",
                      "#e3e5ea");
    setPaletteColours(palette, QPalette::Disabled, "#1c1e23", "#5d626c", "#15171b", "#15171b", "#5d626c", "#23262c",
                      "#5d626c");
    palette.setColor(QPalette::Highlight, QColor("#8a5a12"));
    palette.setColor(QPalette::HighlightedText, QColor("#fff4de"));
    palette.setColor(QPalette::Light, QColor("#454953"));
    palette.setColor(QPalette::Midlight, QColor("#353840"));
    palette.setColor(QPalette::Mid, QColor("#202227"));
    palette.setColor(QPalette::Dark, QColor("#0d0e11"));
    palette.setColor(QPalette::Shadow, QColor("#000000"));
    palette.setColor(QPalette::ToolTipBase, QColor("#2b2e35"));
    palette.setColor(QPalette::ToolTipText, QColor("#e3e5ea"));
    palette.setColor(QPalette::PlaceholderText, QColor("#7a808a"));
    palette.setColor(QPalette::Link, QColor("#f0a830"));
    palette.setColor(QPalette::BrightText, QColor("#ff5a4e"));
    return palette;
}

bool applyControllerSkin(const QString &key, QString *error)
{
    const ControllerSkin *skin = findControllerSkin(key);
    if (!skin) {
        if (error)
            *error = QStringLiteral("Unknown Controller skin: %1").arg(key);
        return false;
    }
    QStringList texts;
    for (const QString &path : skin->styleSheets) {
        QFile file(path);
        const bool opened = file.open(QIODevice::ReadOnly | QIODevice::Text);
        qCInfo(lcSystem).noquote() << QStringLiteral("READ_SOURCE skin %1 opened=%2")
                                          .arg(path, opened ? QStringLiteral("true") : QStringLiteral("false"));
        if (!opened) {
            if (error)
                *error = QStringLiteral("Could not load Controller skin: %1 (%2)").arg(path, key);
            return false;
        }
        texts << QString::fromUtf8(file.readAll());
    }
    const QString joined = texts.join(QLatin1Char('\n'));

    currentSkinKey() = skin->key;
    qApp->setProperty("controllerSkinKey", skin->key);
    qApp->setProperty("controllerSkinUsesHardwareEffects", skin->usesHardwareEffects);
    QApplication::setPalette(controllerSkinPalette(skin->paletteId));
    qApp->setProperty("controllerUnscaledStyleSheet", joined);
    qApp->setStyleSheet(scaleStyleSheet(joined, interfaceScale(), textSizeFactor()));
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget *widget : widgets)
        widget->update();
    if (error)
        error->clear();
    return true;
}

void rescaleControllerSkin()
{
    if (currentSkinKey().isEmpty())
        return;
    const QString unscaled = qApp->property("controllerUnscaledStyleSheet").toString();
    qApp->setStyleSheet(scaleStyleSheet(unscaled, interfaceScale(), textSizeFactor()));
}

QString scaleStyleSheet(const QString &unscaled, double scale, double textFactor)
{
    const QString &text = unscaled;
    QString out;
    out.reserve(text.size() + text.size() / 8);
    int depth = 0;
    qsizetype declarationStart = 0;
    bool propertyKnown = false;
    bool fontProperty = false;
    qsizetype i = 0;
    const auto copyTo = [&](qsizetype end) {
        out += QStringView(text).mid(i, end - i);
        i = end;
    };
    while (i < text.size()) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('/') && i + 1 < text.size() && text.at(i + 1) == QLatin1Char('*')) {
            copyTo(pastClosing(text, i + 2, QLatin1String("*/")));
        } else if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
            copyTo(pastQuoted(text, i));
        } else if (text.mid(i, 4).compare(QLatin1String("url("), Qt::CaseInsensitive) == 0
                   && (i == 0 || !identifierCharacter(text.at(i - 1)))) {
            copyTo(pastClosing(text, i + 4, QLatin1String(")")));
        } else if (c == QLatin1Char('{') || c == QLatin1Char('}') || c == QLatin1Char(';')) {
            depth = c == QLatin1Char('{') ? depth + 1 : c == QLatin1Char('}') ? std::max(0, depth - 1) : depth;
            declarationStart = i + 1;
            propertyKnown = false;
            fontProperty = false;
            copyTo(i + 1);
        } else if (c == QLatin1Char(':') && depth > 0 && !propertyKnown) {
            const QString property = text.mid(declarationStart, i - declarationStart).trimmed().toLower();
            propertyKnown = true;
            fontProperty = property == QLatin1String("font-size") || property == QLatin1String("font");
            copyTo(i + 1);
        } else if (depth > 0
                   && (c.isDigit() || ((c == QLatin1Char('-') || c == QLatin1Char('.')) && digitAt(text, i + 1))
                       || (c == QLatin1Char('-') && i + 2 < text.size() && text.at(i + 1) == QLatin1Char('.')
                           && digitAt(text, i + 2)))) {
            qsizetype end = i + 1;
            while (end < text.size() && (text.at(end).isDigit() || text.at(end) == QLatin1Char('.')))
                ++end;
            const QString unit = text.mid(end, 2).toLower();
            const bool length = (unit == QLatin1String("px") || unit == QLatin1String("pt"))
                && (end + 2 >= text.size() || !identifierCharacter(text.at(end + 2)));
            bool ok = false;
            const double value = QStringView(text).mid(i, end - i).toDouble(&ok);
            if (!length || !ok) {
                copyTo(end);
                continue;
            }
            const double factor = fontProperty ? scale * textFactor : scale;
            out += QString::number(scaledBy(value, factor));
            out += QStringView(text).mid(end, 2);
            i = end + 2;
        } else if (identifierCharacter(c)) {
            // Names, hex colours and the like pass whole, so no digits inside
            // them are taken for a length.
            qsizetype end = i + 1;
            while (end < text.size() && identifierCharacter(text.at(end)))
                ++end;
            copyTo(end);
        } else {
            copyTo(i + 1);
        }
    }
    return out;
}

} // namespace tarnix
