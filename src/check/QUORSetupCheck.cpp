// SPDX-License-Identifier: MIT
#include "QUORSetupCheck.h"

#include "QUORBackgroundSettings.h"
#include "QUORDirectoryChecks.h"
#include "QUORFindingCollector.h"
#include "QUORGeneralSettings.h"
#include "QUORSettingsAudit.h"
#include "QUORSettingsFile.h"
#include "QUORSettingsInForce.h"
#include "QUORSettingsReader.h"
#include "QUORSystem.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

using Cost = QUORFinding::Cost;
using File = QUORSettingsKey::File;

QUORSetupCheck::QUORSetupCheck(Drawing drawing) : _drawing(std::move(drawing)) {}

QUORSetupCheck::~QUORSetupCheck() = default;

void QUORSetupCheck::run() {
    QUORFindingCollector findings;
    auditFiles(findings);
    QUORGeneralSettings general;
    const QUORBackgroundSettings background;
    checkBackgroundFile(findings, background);
    const auto state = QUORPresetChecks::checkDisplayState(findings, general, background);
    QUORPresetChecks::checkViewAngle(findings, general, background);
    QUORPresetChecks::checkFurtherViews(findings, general, background);

    const bool shows2d = state->has2DEnabled();
    const auto product2dOf = [&](const QString& configuration) {
        const QString product = background.get2DProduct(configuration);
        return shows2d && !QUORBackgroundSettings::isNoProduct(product) ? product : QString();
    };
    const QStringList configurations = QUORBackgroundSettings::getAllConfigurations();
    const bool needs2d = std::ranges::any_of(
        configurations, [&](const QString& configuration) { return !product2dOf(configuration).isEmpty(); });
    _survey = std::make_unique<QUORProductSurvey>(general.get3DDir(), general.get2DDir(),
                                                  general.getTimeWindow(), product2dOf);
    QUORDirectoryChecks::checkProducts(findings, *_survey, needs2d);
    if (!findings.holds("directories-swapped")) {
        QUORPresetChecks::checkPairing(findings, *_survey, background.getWait2D());
    }
    QUORPresetChecks::checkProducts(findings, _survey.get(), _drawing.scaleNames);
    QUORPresetChecks::checkColors(findings);
    _outputDirectory = background.getDirectory();
    if (!findings.holds("background-file-missing") && !findings.holds("background-file-elsewhere")) {
        QUORDirectoryChecks::checkOutput(findings, _outputDirectory);
    }
    const bool terrain = state->getGroup(QUORDisplayState::GEO_GROUP)->isVisible() &&
                         state->getLayer(QUORDisplayState::TERRAIN_LAYER)->isVisible();
    if (terrain) {
        QUORDirectoryChecks::checkTerrain(findings, general.getGeoDir(), _survey.get());
    }
    if (const QString obstacle = _drawing.findObstacle ? _drawing.findObstacle() : QString();
        !obstacle.isEmpty()) {
        findings.add(Cost::NoImages, "no-opengl", {},
                     QStringLiteral("nothing can be drawn here: ") + obstacle,
                     QStringLiteral("install libegl1 and libgl1-mesa-dri"));
    }
    _findings = findings.takeSorted();
}

void QUORSetupCheck::runSettings() {
    QUORFindingCollector findings;
    auditFiles(findings);
    QUORGeneralSettings general;
    const QUORBackgroundSettings background;
    QUORPresetChecks::checkDisplayState(findings, general, background);
    QUORPresetChecks::checkViewAngle(findings, general, background);
    QUORPresetChecks::checkFurtherViews(findings, general, background);
    QUORPresetChecks::checkProducts(findings, nullptr, _drawing.scaleNames);
    QUORPresetChecks::checkColors(findings);
    if (QFileInfo::exists(background.getSettingsFileName())) {
        QUORDirectoryChecks::checkOutputSetting(findings, background.getDirectory());
    }
    _findings = findings.takeSorted();
}

bool QUORSetupCheck::costsImages() const {
    return std::ranges::any_of(_findings,
                               [](const QUORFinding& finding) { return finding.cost > Cost::Remark; });
}

void QUORSetupCheck::auditFiles(QUORFindingCollector& findings) {
    for (const File file : {File::Main, File::Background, File::Colors, File::Styles, File::Landmarks}) {
        for (const QString& path : QUORSettingsInForce::getFiles(file)) {
            findings.append(QUORSettingsAudit(file, path).run());
            if (QFileInfo::exists(path)) {
                _files.append(path);
            }
        }
    }
}

void QUORSetupCheck::checkBackgroundFile(QUORFindingCollector& findings,
                                         const QUORBackgroundSettings& background) const {
    const QString path = background.getSettingsFileName();
    if (QFileInfo::exists(path)) {
        if (!background.isActivated() && background.isRead()) {
            findings.addAt(
                Cost::Remark, "not-activated", File::Background, QUORBackgroundSettings::GROUP,
                QUORBackgroundSettings::ACTIVATED,
                QStringLiteral("background rendering is not switched on; the service warns, and renders"),
                QStringLiteral("quor3d set activated true"));
        }
        return;
    }
    if (QString error; !QUORSettingsFile::read(path, error)) {
        return; // reported as unreadable
    }
    const QString own =
        QFileInfo(QUORSettingsReader::findUserFile(QUORSystem::BG_SERVICE_NAME)).absoluteFilePath();
    if (own != path && QFileInfo::exists(own)) {
        findings.add(
            Cost::Wrong, "background-file-elsewhere", own,
            QStringLiteral("is not read, the background settings are read from ") + path,
            QStringLiteral(
                "move it there, or name it with QUOR3D_BG_SETTINGS in the environment of the service"));
        return;
    }
    findings.add(
        Cost::Wrong, "background-file-missing", path,
        QStringLiteral("does not exist; ") +
            background.describeDefaults(QStringLiteral("the working directory of the service")),
        QStringLiteral(
            "quor3d set BACKGROUND/directory DIRECTORY; the file is that of the background user, whom "
            "BG_USER names in the system configuration, or what QUOR3D_BG_SETTINGS names"));
}
