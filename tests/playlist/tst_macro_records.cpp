#include "playlist/macro_json.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>
#include <QUuid>

#include <cmath>
#include <functional>

using namespace tarnix;

namespace {

using Mutation = std::function<void(QList<MacroDefinition> &)>;

QList<MacroDefinition> validMacros()
{
    MacroStep step;
    step.type = MacroStepType::runtimeSetting;
    step.operation = "masterVolume";
    step.value = -960;
    return {MacroDefinition{QUuid::createUuid().toString(), "Show", {step}}};
}

MacroStep &firstStep(QList<MacroDefinition> &m) { return m[0].steps[0]; }

Mutation patch(const QJsonObject &p)
{
    return [p](QList<MacroDefinition> &m) {
        firstStep(m).type = MacroStepType::itemSettings;
        firstStep(m).settingsPatch = p;
    };
}

Mutation runtime(const QString &op, double value)
{
    return [=](QList<MacroDefinition> &m) {
        firstStep(m).operation = op;
        firstStep(m).value = value;
    };
}

} // namespace

Q_DECLARE_METATYPE(Mutation)

class TestMacroRecords : public QObject {
    Q_OBJECT

private slots:
    void validation_data()
    {
        QTest::addColumn<Mutation>("mutate");
        QTest::addColumn<QString>("message");
        const QString p = "Macro Show, step 1: ";
        auto row = [](const char *name, Mutation m, const QString &message) {
            QTest::newRow(name) << m << message;
        };
        row("valid", [](auto &) {}, "");
        row("1000 macros", [](auto &m) {
            while (m.size() < 1000) m.append(MacroDefinition{QUuid::createUuid().toString(), "M", {}});
        }, "");
        row("1001 macros", [](auto &m) {
            while (m.size() < 1001) m.append(MacroDefinition{QUuid::createUuid().toString(), "M", {}});
        }, "Too many macros.");
        row("10001 steps", [](auto &m) { m[0].steps.resize(10001); }, "Too many macro steps.");
        row("macro id", [](auto &m) { m[0].id = "x"; }, "Macro ID is invalid or duplicated: x.");
        row("macro id twice in another spelling", [](auto &m) {
            m[0].id = "{5d7f0c3a-2e4b-4f6a-8b9c-0d1e2f3a4b5c}";
            m.append(MacroDefinition{"5D7F0C3A-2E4B-4F6A-8B9C-0D1E2F3A4B5C", "Other", {}});
        }, "Macro ID is invalid or duplicated: 5D7F0C3A-2E4B-4F6A-8B9C-0D1E2F3A4B5C.");
        row("step id twice across macros", [](auto &m) {
            m.append(MacroDefinition{QUuid::createUuid().toString(), "Other", {m[0].steps[0]}});
        }, "Macro Other, step 1: Invalid or duplicate step ID.");
        row("step type", [](auto &m) { firstStep(m).type = static_cast<MacroStepType>(9); }, p + "Unknown step type.");
        row("document id", [](auto &m) { firstStep(m).documentId = "doc"; }, p + "Invalid document ID.");
        row("delay 7 days", [](auto &m) { firstStep(m).durationMs = 604800000; }, "");
        row("delay over", [](auto &m) { firstStep(m).durationMs = 604800001; }, p + "Delay must be between 0 and 7 days.");
        row("crossfade 50", [](auto &m) { firstStep(m).crossfadeDurationMs = 50; }, p + "Invalid crossfade duration.");
        row("value nan", runtime("masterVolume", std::nan("")), p + "Value must be finite.");
        row("transport", [](auto &m) { firstStep(m).type = MacroStepType::transport; firstStep(m).operation = "stop"; },
            p + "Unknown transport operation.");
        row("volume over", runtime("itemVolume", 61), p + "itemVolume must be an integer from -960 to 60.");
        row("volume fraction", runtime("masterVolume", 1.5), p + "masterVolume must be an integer from -960 to 60.");
        row("mute", runtime("mute", 2), p + "mute must be 0 or 1.");
        row("rate", runtime("playbackRate", 1.1), p + "Unsupported playback rate.");
        row("rate 0.75", runtime("playbackRate", 0.75), "");
        row("operation", runtime("speed", 1), p + "Unknown runtime operation: speed.");
        row("patch repeat 0", patch({{"repeatCount", 0}}), p + "repeatCount must be an integer from 1 to 9999.");
        row("patch out before in", patch({{"inPointMs", 500}, {"outPointMs", 500}}), p + "OUT must be after IN.");
        row("patch goto without target is fine here", patch({{"endMode", "goto"}}), "");
        row("patch start", patch({{"startMode", "Play"}}), p + "startMode must be pause or play.");
        row("patch end", patch({{"endMode", "repeat "}}), p + "Unsupported endMode.");
        row("patch repeat end", patch({{"repeatEndMode", "repeat"}}), p + "Unsupported repeatEndMode.");
        row("patch fade", patch({{"fadeIn", 1}}), p + "fadeIn must be an object.");
        row("patch fade flag", patch({{"fadeOut", QJsonObject{{"enabled", 1}}}}), p + "fadeOut.enabled must be boolean.");
        row("patch fade key", patch({{"endCrossfade", QJsonObject{{"length", 1}}}}), p + "Unknown setting endCrossfade.length.");
        row("patch key", patch({{"color", "red"}}), p + "Unknown item setting: color.");
        row("patch goto", patch({{"gotoTargetItemId", 5}}), p + "gotoTargetItemId must be an integer ID string.");
        row("patch eq", patch({{"nominalEqHighTenthsDb", -151}}), p + "nominalEqHighTenthsDb must be an integer from -150 to 150.");
    }
    void validation()
    {
        QFETCH(Mutation, mutate);
        QFETCH(QString, message);
        QList<MacroDefinition> macros = validMacros();
        mutate(macros);
        QString error = "not cleared";
        const bool ok = validateMacros(macros, &error);
        QCOMPARE(error, message);
        QCOMPARE(ok, message.isEmpty());
    }

    void patchApplication()
    {
        PlaylistItemSettings base;
        base.outPointMs = 9000;
        PlaylistItemSettings out;
        QString error;
        QVERIFY(validateItemPatch(base, {{"outPointMs", QJsonValue()}, {"fadeIn", QJsonObject{{"durationMs", 300}}},
                                         {"gotoTargetItemId", "007"}}, &out, &error, true));
        QVERIFY(!out.outPointMs);
        QCOMPARE(out.fadeIn.durationMs, 300);
        QCOMPARE(out.gotoTargetItemId, 7u);
        QVERIFY(!validateItemPatch(base, {{"endMode", "goto"}}, &out, &error, true));
        QCOMPARE(error, "GOTO requires a target item.");
        QVERIFY(!validateItemPatch(base, {}, nullptr, &error, false));
        QCOMPARE(error, "No settings output was supplied.");
        QVERIFY(!validateItemPatch(base, {{"fadeIn", QJsonObject{{"durationMs", 99}}}}, &out, nullptr, false));
    }

    void parsing()
    {
        QString error = "x";
        QCOMPARE(parseMacros(QJsonValue(QJsonValue::Undefined), &error)->size(), 0);
        QVERIFY(error.isEmpty());
        QVERIFY(!parseMacros(QJsonValue(), &error));
        QCOMPARE(error, "macros must be an array.");
        auto withStep = [](const QJsonObject &step) {
            return QJsonArray{QJsonObject{{"version", 1}, {"id", QUuid::createUuid().toString()},
                                          {"name", "Show"}, {"steps", QJsonArray{step}}}};
        };
        QVERIFY(!parseMacros(withStep({{"scheduledAt", "2026-11-21T10:00:00.000"}}), &error));
        QCOMPARE(error, "Invalid macro step 1 in Show.");
        for (const QJsonObject &bad : {QJsonObject{{"enabled", "yes"}}, QJsonObject{{"itemId", 5}},
                                       QJsonObject{{"durationMs", 604800001}}, QJsonObject{{"value", "1"}},
                                       QJsonObject{{"settingsPatch", QJsonArray{}}}, QJsonObject{{"type", "wait"}}}) {
            QVERIFY2(!parseMacros(withStep(bad), &error), qPrintable(QJsonDocument(bad).toJson()));
        }
        const auto parsed = parseMacros(withStep({{"scheduledAt", "2026-11-21T10:00:00.000-05:00"}}), &error);
        QVERIFY(parsed);
        QCOMPARE(writeMacros(*parsed)[0].toObject()["steps"].toArray()[0].toObject()["scheduledAt"].toString(),
                 "2026-11-21T10:00:00.000-05:00");
        QVERIFY(!parseMacros(QJsonArray{QJsonObject{{"version", 2}, {"id", "x"}, {"name", "n"}, {"steps", QJsonArray{}}}},
                             &error));
        QCOMPARE(error, "Invalid or unsupported macro document format.");
    }

    void references()
    {
        const QString doc = QUuid::createUuid().toString(QUuid::WithoutBraces);
        MacroStep cue;
        cue.type = MacroStepType::cue;
        cue.itemId = 5;
        cue.documentId = doc;
        MacroStep foreign = cue;
        foreign.documentId = QUuid::createUuid().toString(QUuid::WithoutBraces);
        MacroStep settings = cue;
        settings.type = MacroStepType::itemSettings;
        settings.itemId = 1;
        settings.settingsPatch = {{"gotoTargetItemId", "9"}};
        MacroStep note;  // names nothing, checks nothing
        const QList<MacroDefinition> macros{MacroDefinition{"{m}", "Show", {cue, foreign, settings, note}}};
        QCOMPARE(macroReferenceProblems(macros, doc, {1}),
                 (QStringList{"Macro Show, step 1: Target item 5 is missing.",
                              "Macro Show, step 2: Target belongs to a different or unassigned document.",
                              "Macro Show, step 3: GOTO target is missing or belongs to another document."}));
        QVERIFY(macroReferenceProblems({MacroDefinition{"{m}", "Show", {cue, note}}}, doc, {5}).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestMacroRecords)
#include "tst_macro_records.moc"
