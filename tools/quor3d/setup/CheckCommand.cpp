// SPDX-License-Identifier: MIT
#include "CheckCommand.h"

#include "QUORColormap.h"
#include "QUORRenderWindowFactory.h"
#include "QUORSetupCheck.h"
#include "Terminal.h"
#include "TextTable.h"
#include "ToolApplication.h"

#include <CLI/CLI.hpp>

#include <vtkOpenGLRenderWindow.h>

#include <iostream>

namespace {

using Cost = QUORFinding::Cost;

const struct {
    Cost cost;
    const char* heading;
    Terminal::Color color;
} HEADINGS[] = {
    {Cost::NoImages, "No image at all", Terminal::Color::Red},
    {Cost::Missing, "Images are missing", Terminal::Color::Red},
    {Cost::Wrong, "Images show something else than was meant", Terminal::Color::Yellow},
    {Cost::Remark, "Remarks", Terminal::Color::Dim},
};

std::string placeOf(const QUORFinding& finding) {
    std::string place = finding.file.toStdString();
    if (finding.line > 0) {
        place += ":" + std::to_string(finding.line);
    }
    if (!finding.key.isEmpty()) {
        place += (place.empty() ? "" : ": ") + finding.key.toStdString();
    }
    return place;
}

void printFindings(const QUORFindings& findings) {
    for (const auto& row : HEADINGS) {
        bool first = true;
        for (const QUORFinding& finding : findings) {
            if (finding.cost != row.cost) {
                continue;
            }
            if (std::exchange(first, false)) {
                std::cout << Terminal::paint(row.color, row.heading) << ":\n";
            }
            const std::string place = placeOf(finding);
            std::cout << "  " << place << (place.empty() ? "" : "\n    ") << finding.problem.toStdString()
                      << '\n';
            if (!finding.advice.isEmpty()) {
                std::cout << "    "
                          << Terminal::paint(Terminal::Color::Bold, "-> " + finding.advice.toStdString())
                          << '\n';
            }
        }
    }
}

QString timeOf(const QUORProductSurvey::Row& row) {
    return row.newest->getDataTime().toString(Qt::ISODate);
}

QString describePairs(const QUORProductSurvey::Row& row) {
    if (row.product2d.isEmpty()) {
        return QStringLiteral("drawn without a 2D product");
    }
    QString text = QString::number(row.with2d) + QStringLiteral(" with their ") + row.product2d;
    for (auto reason = row.reasons.cbegin(); reason != row.reasons.cend(); ++reason) {
        text += QStringLiteral(", ") + QString::number(reason.value()) + QStringLiteral(" without: ") +
                reason.key();
    }
    return text;
}

void printSurvey(const QUORSetupCheck& check) {
    const QUORProductSurvey& survey = *check.getSurvey();
    std::cout << "Read as " << ServiceUser::current().toStdString() << ":";
    for (const QString& file : check.getFiles()) {
        std::cout << ' ' << file.toStdString();
    }
    std::cout << (check.getFiles().isEmpty() ? " no settings file\n" : "\n");
    TextTable directories;
    directories.add(
        {QStringLiteral("3D products"), survey.get3D().path, QString::number(survey.get3D().products)});
    directories.add(
        {QStringLiteral("2D products"), survey.get2D().path, QString::number(survey.get2D().products)});
    directories.add({QStringLiteral("images"), check.getOutputDirectory(), {}});
    directories.print();
    TextTable table;
    for (const QUORProductSurvey::Row& row : survey.getRows()) {
        table.add({row.site, row.product + QLatin1Char(' ') + row.configuration,
                   QString::number(row.files) + QStringLiteral(" files"),
                   QStringLiteral("newest ") + timeOf(row), describePairs(row)});
    }
    table.print();
    if (survey.get3D().products > 0) {
        std::cout << "The service draws what arrives while it runs; what is there already is not drawn.\n";
    }
}

QJsonObject toJson(const QUORFinding& finding) {
    return {{"cost", QUORFinding::toText(finding.cost)},
            {"code", finding.code},
            {"file", finding.file},
            {"line", finding.line},
            {"key", finding.key},
            {"problem", finding.problem},
            {"advice", finding.advice}};
}

QJsonObject toJson(const QUORProductSurvey::Row& row) {
    QJsonObject reasons;
    for (auto reason = row.reasons.cbegin(); reason != row.reasons.cend(); ++reason) {
        reasons.insert(reason.key(), reason.value());
    }
    return {{"site", row.site},
            {"product", row.product},
            {"configuration", row.configuration},
            {"files", row.files},
            {"newest_time", timeOf(row)},
            {"newest_file", row.newest->getPath()},
            {"product_2d", row.product2d},
            {"with_2d", row.with2d},
            {"without_2d", reasons}};
}

QJsonObject toJson(const QUORProductSurvey::Directory& directory) {
    return {{"path", directory.path},
            {"products", directory.products},
            {"other_products", directory.otherKind},
            {"unfinished", directory.unfinished.size()},
            {"discarded", directory.discarded.size()},
            {"duplicates", directory.duplicates}};
}

void printJson(const QUORSetupCheck& check) {
    QJsonArray findings;
    for (const QUORFinding& finding : check.getFindings()) {
        findings.append(toJson(finding));
    }
    QJsonArray products;
    for (const QUORProductSurvey::Row& row : check.getSurvey()->getRows()) {
        products.append(toJson(row));
    }
    JsonOutput::print(QJsonObject{{"user", ServiceUser::current()},
                                  {"files", QJsonArray::fromStringList(check.getFiles())},
                                  {"good", !check.costsImages()},
                                  {"findings", findings},
                                  {"directory_3d", toJson(check.getSurvey()->get3D())},
                                  {"directory_2d", toJson(check.getSurvey()->get2D())},
                                  {"directory_images", check.getOutputDirectory()},
                                  {"products", products}});
}

QString findObstacle() {
    qputenv("MESA_SHADER_CACHE_DISABLE", "true"); // a check leaves no files
    QString error;
    return QUORRenderWindowFactory::create(error) ? QString() : error;
}

QStringList findScaleNames(int rawType) {
    QStringList names;
    for (const auto& scale : QUORColormap::getScalesForDataType(rawType)) {
        names.append(scale.name);
    }
    return names;
}

} // namespace

std::string CheckCommand::examples() const {
    return "  quor3d check                 as the user of this shell, or as root as the background user\n"
           "  quor3d check --user quor3d   as the user quor3d, with its rights\n"
           "  quor3d check --json          for a script; the exit status is 1 when images are missing or "
           "wrong\n";
}

void CheckCommand::addOptions(CLI::App& app) {
    _user.addOption(app);
    _json.addOption(app);
}

ExitStatus CheckCommand::run() {
    const ToolApplication application; // names the main settings file
    _user.become();
    QUORSetupCheck check({findObstacle, findScaleNames});
    check.run();
    if (_json.isWanted()) {
        printJson(check);
    } else {
        printFindings(check.getFindings());
        printSurvey(check);
        std::cout << (check.costsImages() ? "" : "Nothing is wrong.\n");
    }
    return check.costsImages() ? ExitStatus::Found : ExitStatus::Success;
}
