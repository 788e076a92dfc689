// SPDX-License-Identifier: MIT
#include "RenderSettings.h"

#include "QUORBackgroundSettings.h"
#include "QUORSettingsEditor.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsSearch.h"
#include "QUORSettingsValue.h"
#include "QUORSystem.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

#include <array>

namespace {

using Key = QUORSettingsKey;

struct FileName {
    Key::File file;
    const char* name;
};
constexpr std::array FILES{FileName{Key::File::Main, "QUOR3D"}, FileName{Key::File::Background, "quor3dd"},
                           FileName{Key::File::Colors, "QUOR3DColors"},
                           FileName{Key::File::Styles, "QUOR3DVisStyles"},
                           FileName{Key::File::Landmarks, "QUOR3DLandmarks"}};

QString fileIn(const QString& folder, const char* name) {
    return folder + QLatin1Char('/') + QUORSystem::ORGANIZATION_NAME + QLatin1Char('/') +
           QLatin1String(name) + QStringLiteral(".conf");
}

QString copyFile(const QString& from, const QString& to) {
    if (!QFileInfo::exists(from)) {
        return {};
    }
    QFile file(from);
    return file.copy(to) ? QString() : from + QStringLiteral(": ") + file.errorString();
}

} // namespace

QString RenderSettings::copyUsers() const {
    QDir().mkpath(_folder + QLatin1Char('/') + QUORSystem::ORGANIZATION_NAME);
    for (const FileName& file : FILES) {
        const QString from = file.file == Key::File::Background
                                 ? QUORBackgroundSettings::getBgSettingsFileName()
                                 : QUORSettingsReader::findUserFile(QString::fromLatin1(file.name));
        if (const QString error = copyFile(from, fileIn(_folder, file.name)); !error.isEmpty()) {
            return error;
        }
    }
    QSettings background(fileIn(_folder, "quor3dd"), QSettings::NativeFormat);
    background.setValue(QStringLiteral("BACKGROUND/activated"), QStringLiteral("true"));
    return {};
}

QString RenderSettings::copyTo(const QString& folder) const {
    QDir().mkpath(folder + QLatin1Char('/') + QUORSystem::ORGANIZATION_NAME);
    for (const FileName& file : FILES) {
        const QString error = copyFile(fileIn(_folder, file.name), fileIn(folder, file.name));
        if (!error.isEmpty()) {
            return error;
        }
    }
    return {};
}

QString RenderSettings::set(const QString& assignment) const {
    const QString name = assignment.section(QLatin1Char('='), 0, 0).trimmed();
    const QString value = assignment.section(QLatin1Char('='), 1).trimmed();
    if (!assignment.contains(QLatin1Char('='))) {
        return assignment + QStringLiteral(": KEY=VALUE is wanted");
    }
    const QList<QUORSettingsSearch::Target> targets = QUORSettingsSearch::findNamed(name);
    if (targets.size() != 1 || targets.first().row == nullptr) {
        return name + (targets.size() > 1 ? QStringLiteral(": name its group, as in GROUP/KEY")
                                          : QStringLiteral(": there is no such setting"));
    }
    const QUORSettingsSearch::Target& target = targets.first();
    if (const QString problem = QUORSettingsValue::findProblem(*target.row, value); !problem.isEmpty()) {
        return name + QStringLiteral(": \"") + value + QStringLiteral("\" ") + problem;
    }
    const auto file = std::ranges::find(FILES, target.file, &FileName::file);
    return QUORSettingsEditor::set(fileIn(_folder, file->name), target, value)
               ? QString()
               : name + QStringLiteral(": cannot be stored");
}

void RenderSettings::apply() const {
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, _folder);
    qputenv(QUORBackgroundSettings::FILE_VARIABLE, QFile::encodeName(fileIn(_folder, "quor3dd")));
}
