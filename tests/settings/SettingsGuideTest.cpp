// SPDX-License-Identifier: MIT
#include "QUORBackgroundSettings.h"
#include "QUORDataType.h"
#include "QUORGeneralSettings.h"
#include "QUORProductSettings.h"
#include "QUORSettingsTable.h"
#include "QUORSettingsValue.h"
#include "ScratchHome.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QSettings>

namespace {

QString toText(std::string_view text) {
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

QString keyCell(const QUORSettingsKey& key) {
    const QString element = key.array.empty() ? QString() : toText(key.array) + QStringLiteral("/N/");
    return element + key.nameText().replace(QLatin1Char('*'), QStringLiteral("NUMBER"));
}

/// The row of a key in the settings guide.
QString guideRow(const QUORSettingsKey& key) {
    QString meaning = toText(key.meaning);
    if (const QString range = QUORSettingsValue::describeRange(key); !range.isEmpty()) {
        const bool limited = key.beyond == QUORSettingsKey::Beyond::Limited;
        const QString end = (limited ? QStringLiteral("limited to ") : QString()) + range;
        const bool choice = key.type == QUORSettingsKey::Type::Choice;
        meaning = (choice ? range : meaning) + QStringLiteral("; ") + (choice ? meaning : end);
    }
    const QStringList cells{QLatin1Char('`') + keyCell(key) + QLatin1Char('`'),
                            QUORSettingsValue::describeType(key), QUORSettingsValue::describeDefault(key),
                            meaning};
    return QStringLiteral("| ") + cells.join(QStringLiteral(" | ")) + QStringLiteral(" |\n");
}

/// Whether a row is the one of a key in a file, whose groups and elements are numbered and named.
bool isRowOf(const QUORSettingsKey& key, const QString& path) {
    const QString row = toText(key.group) + QLatin1Char('/') + keyCell(key);
    const QString pattern = QRegularExpression::escape(row)
                                .replace(QStringLiteral("\\*"), QStringLiteral("\\S+"))
                                .replace(QStringLiteral("\\/N\\/"), QStringLiteral("\\/\\d+\\/"))
                                .replace(QStringLiteral("NUMBER"), QStringLiteral("\\d+"));
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(path).hasMatch();
}

/// The rows of a group stand together in the table, so they do in the guide.
TEST(SettingsGuideTest, HoldsTheTableOfEveryGroup) {
    const QString guide = QString::fromUtf8(readFile(sourcePath(QStringLiteral("docs/settings.md"))));
    QMap<std::string_view, QString> tables;
    for (const QUORSettingsKey& key : QUORSettingsTable::getRows()) {
        tables[key.group] += guideRow(key);
    }
    EXPECT_GT(tables.size(), 15);
    for (auto table = tables.cbegin(); table != tables.cend(); ++table) {
        EXPECT_TRUE(guide.contains(table.value())) << table.key() << " wants:\n" << qPrintable(table.value());
    }
}

/// What the program stores without any settings is what the table says, and nothing else.
TEST(SettingsGuideTest, TheTableHoldsWhatIsStored) {
    const ScratchHome home;
    const QString background = home.path() + QStringLiteral("/background.conf");
    qputenv(QUORBackgroundSettings::FILE_VARIABLE, background.toLocal8Bit());
    QUORGeneralSettings general;
    general.save();
    general.saveDisplayStates(std::make_shared<QUORDisplayState>());
    general.saveViewAngles(std::make_shared<QUORViewAngle>());
    QUORExportSettings().save();
    QUORBackgroundSettings().save();
    QUORProductSettings(QStringLiteral("CAPPI"), QStringLiteral("Z"), QUORDataType(2));
    qunsetenv(QUORBackgroundSettings::FILE_VARIABLE);

    int found = 0;
    for (const QString& name : {QSettings().fileName(), background}) {
        const QSettings stored(name, QSettings::NativeFormat);
        for (QString path : stored.allKeys()) {
            const QString value = stored.value(path).toString();
            path.replace(QStringLiteral("General/"), QStringLiteral("GENERAL/"));
            if (path.endsWith(QStringLiteral("/size"))) {
                continue;
            }
            const auto rows = QUORSettingsTable::getRows();
            const auto row =
                std::ranges::find_if(rows, [&](const QUORSettingsKey& key) { return isRowOf(key, path); });
            ASSERT_NE(row, rows.end()) << qPrintable(path);
            ++found;
            if (row->computed.empty() && (row->array.empty() || row->array == "products")) {
                EXPECT_EQ(QUORSettingsValue::describeDefault(*row), value) << qPrintable(path);
            }
            EXPECT_EQ(QUORSettingsValue::findProblem(*row, value), QString()) << qPrintable(path);
        }
    }
    EXPECT_GT(found, 50);
}

/// A choice that the program knows and the table does not, or the other way, would be an edit without effect.
TEST(SettingsGuideTest, ChoicesAreThoseOfTheProgram) {
    const auto isChoice = [](const QUORSettingsKey& key, const QString& text) {
        return QUORSettingsValue::findProblem(key, text).isEmpty();
    };
    constexpr QUORSettingsKey product = QUORSettingsTable::row("BACKGROUND", "product", "products");
    for (const QString& name : QUORBackgroundSettings::getAll2DProducts()) {
        EXPECT_TRUE(isChoice(product, name)) << qPrintable(name);
    }
    for (const QString& name : QUORExportSettings::getSupportedOutputFormats()) {
        EXPECT_TRUE(isChoice(QUORSettingsTable::row("BACKGROUND", "outputformat"), name));
    }
    for (const auto& [text, problem] :
         QMap<QString, QString>{{QStringLiteral("1600"), {}},
                                {QStringLiteral("1600px"), QStringLiteral("is not a whole number")},
                                {QStringLiteral("0"), QStringLiteral("is out of range, which is 1 to 16384")}}
             .asKeyValueRange()) {
        EXPECT_EQ(QUORSettingsValue::findProblem(QUORSettingsTable::row("BACKGROUND", "width"), text),
                  problem);
    }
}

} // namespace
