// SPDX-License-Identifier: MIT
#include "ScalesCommand.h"

#include "QUORBackgroundSettings.h"
#include "QUORDataType.h"
#include "QUORFilePublisher.h"
#include "QUORLog.h"
#include "QUORSettingsSearch.h"
#include "ScalePicture.h"
#include "TextTable.h"
#include "ToolApplication.h"

#include <CLI/CLI.hpp>

#include <QFile>

#include <algorithm>
#include <iostream>

namespace {

constexpr qint64 LARGEST_PALETTE = 1 << 20; // bytes

QString kindOf(const QUORColorScales::Scale& scale) {
    const int type = QUORColorScales::findDataType(scale.dataIndex);
    return type < 0 ? QStringLiteral("-") : QUORDataType(type).getConfiguration();
}

void complain(const QString& text) {
    std::cerr << "quor3d scales: " << text.toStdString() << '\n';
}

} // namespace

std::string ScalesCommand::examples() const {
    return "  quor3d scales                                     the list\n"
           "  quor3d scales preview Default scale.png --data Z  a picture with its values\n"
           "  quor3d scales import storm.pal --name Storm --data Z\n"
           "  quor3d scales import colours.pal --name Grey --data V --range -30 30\n"
           "  quor3d scales rename Storm 'Storm 2' --data Z\n"
           "  quor3d scales remove 'Storm 2'\n"
           "  quor3d set 'PRODUCT CAPPI Z/colormap' Storm       use it\n";
}

void ScalesCommand::addOptions(CLI::App& app) {
    _user.addOption(app);
    _json.addOption(app);
    app.require_subcommand(0, 1);
    const auto nested = [&](const char* word, const char* text, Action action) {
        CLI::App* const group = app.add_subcommand(word, text)->fallthrough();
        group->callback([this, action] { _action = action; });
        return group;
    };
    const auto addData = [&](CLI::App* group) {
        std::vector<std::string> kinds;
        for (const QString& kind : QUORBackgroundSettings::getAllConfigurations()) {
            kinds.push_back(kind.toStdString());
        }
        return group->add_option("--data", _configuration, "Kind of data")->check(CLI::IsMember(kinds));
    };
    nested("list", "List the scales", Action::List);
    CLI::App* const preview = nested("preview", "Draw a scale as a PNG picture", Action::Preview);
    preview->add_option("NAME", _name, "Its name or number")->required()->type_name("");
    preview->add_option("FILE", _file, "The picture to write")->required()->type_name("");
    addData(preview);
    CLI::App* const adding = nested("import", "Add a scale from a palette file (.cpt, .pal)", Action::Import);
    adding->add_option("FILE", _file, "The palette file")->required()->type_name("");
    adding->add_option("--name", _name, "The name of the scale")->required();
    addData(adding)->required();
    adding->add_option("--units", _units,
                       "Title of the colour bar (default: what the file says, or the unit of the data)");
    adding->add_option("--range", _range, "Lowest and highest value, of a list of colours without values")
        ->expected(2);
    CLI::App* const rename = nested("rename", "Rename a scale", Action::Rename);
    rename->add_option("OLD", _name, "Its name or number")->required()->type_name("");
    rename->add_option("NEW", _newName, "The new name")->required()->type_name("");
    addData(rename);
    CLI::App* const remove = nested("remove", "Remove a scale of the user's file", Action::Remove);
    remove->add_option("NAME", _name, "Its name or number")->required()->type_name("");
    addData(remove);
}

ExitStatus ScalesCommand::run() {
    if (_action == Action::List || _action == Action::Preview) {
        const ToolApplication application(_action == Action::Preview ? ToolApplication::Drawing
                                                                     : ToolApplication::Plain);
        _user.become();
        return _action == Action::List ? list() : preview();
    }
    const ToolApplication application;
    _user.becomeToChange(QUORColorScales::getUserFile);
    QUORLog::Instance().logOpen({});
    if (_action == Action::Import) {
        return importPalette();
    }
    return _action == Action::Rename ? rename() : remove();
}

ExitStatus ScalesCommand::list() {
    QJsonArray array;
    TextTable table;
    for (const QUORColorScales::Scale& scale : QUORColorScales::list()) {
        QJsonArray seams;
        for (const double seam : scale.seams) {
            seams.append(seam);
        }
        array.append(QJsonObject{{"number", scale.id},
                                 {"name", scale.name},
                                 {"data", kindOf(scale)},
                                 {"units", scale.units},
                                 {"seams", seams},
                                 {"source", scale.isUser ? "user" : "packaged"}});
        const QString range = scale.seams.isEmpty()
                                  ? QStringLiteral("no seams")
                                  : QString::number(scale.seams.constFirst()) + QStringLiteral(" to ") +
                                        QString::number(scale.seams.constLast()) + QLatin1Char(' ') +
                                        scale.units;
        table.add({QString::number(scale.id), scale.name, kindOf(scale), range,
                   QString::number(scale.seams.size()) + QStringLiteral(" seams"),
                   scale.isUser ? QStringLiteral("user") : QStringLiteral("packaged")});
    }
    if (_json.isWanted()) {
        JsonOutput::print(array);
    } else {
        table.print();
    }
    return ExitStatus::Success;
}

std::optional<QUORColorScales::Scale> ScalesCommand::find() const {
    const QString name = QString::fromStdString(_name);
    bool isNumber = false;
    const int number = name.toInt(&isNumber);
    QStringList known;
    QList<QUORColorScales::Scale> found;
    for (const QUORColorScales::Scale& scale : QUORColorScales::list()) {
        const bool wanted = _configuration.empty() || kindOf(scale).toStdString() == _configuration;
        known += wanted ? QStringList{scale.name} : QStringList();
        if (wanted && (scale.name == name || (isNumber && scale.id == number))) {
            found.append(scale);
        }
    }
    if (found.size() == 1) {
        return found.constFirst();
    }
    if (found.isEmpty()) {
        const QString near = QUORSettingsSearch::nearest(name, known);
        complain(QStringLiteral("there is no scale \"") + name + QLatin1Char('"') +
                 (near.isEmpty() ? QString()
                                 : QStringLiteral(", did you mean \"") + near + QStringLiteral("\"?")));
    } else {
        complain(QStringLiteral("several scales go by \"") + name +
                 QStringLiteral("\", say --data or its number"));
    }
    return std::nullopt;
}

ExitStatus ScalesCommand::preview() {
    const auto scale = find();
    if (!scale) {
        return ExitStatus::Found;
    }
    const QImage image = ScalePicture::draw(*scale);
    QUORFilePublisher publisher(QString::fromStdString(_file));
    if (!publisher.isReady() || !image.save(publisher.getTemporaryPath(), "PNG") || !publisher.publish()) {
        complain(QString::fromStdString(_file) + QStringLiteral(" cannot be written: ") +
                 publisher.getError());
        return ExitStatus::Found;
    }
    return ExitStatus::Success;
}

ExitStatus ScalesCommand::importPalette() {
    QFile file(QString::fromStdString(_file));
    if (!file.open(QIODevice::ReadOnly)) {
        complain(file.fileName() + QStringLiteral(": ") + file.errorString());
        return ExitStatus::Found;
    }
    QString error;
    QUORPaletteFile palette = QUORPaletteFile::parse(file.read(LARGEST_PALETTE), error);
    if (!palette.hasValues() && !palette.isEmpty()) {
        if (_range.empty() || !(_range.at(0) < _range.at(1))) {
            complain(QStringLiteral("the file is a list of colours without values, say --range LOW HIGH"));
            return ExitStatus::WrongUse;
        }
        palette.spread(_range.at(0), _range.at(1));
    }
    if (palette.isEmpty()) {
        complain(file.fileName() + QStringLiteral(": ") + error);
        return ExitStatus::Found;
    }
    const QString configuration = QString::fromStdString(_configuration);
    const int dataIndex = QUORColorScales::findDataIndex(configuration);
    if (dataIndex == 0) {
        complain(QStringLiteral("the colours file maps no scales to ") + configuration +
                 QStringLiteral(", it has no DATAMAPPING"));
        return ExitStatus::Found;
    }
    const QString name = QString::fromStdString(_name);
    const auto scales = QUORColorScales::list();
    if (std::ranges::any_of(
            scales, [&](const auto& scale) { return scale.name == name && scale.dataIndex == dataIndex; })) {
        complain(QStringLiteral("there is a scale \"") + name +
                 QStringLiteral("\" for this data already, remove it first"));
        return ExitStatus::Found;
    }
    QString units = _units.empty() ? palette.getUnits() : QString::fromStdString(_units);
    if (units.isEmpty()) {
        units = QUORDataType(QUORColorScales::findDataType(dataIndex)).getQuantityUnit();
    }
    if (!QUORColorScales::add(name, dataIndex, units, palette)) {
        return ExitStatus::Found;
    }
    std::cout << _name << ": " << palette.getIntervals().size() << " intervals, "
              << palette.getIntervals().constFirst().value << " to " << palette.getEnd() << ' '
              << units.toStdString() << '\n';
    return ExitStatus::Success;
}

ExitStatus ScalesCommand::rename() {
    const auto scale = find();
    return scale && QUORColorScales::rename(scale->id, QString::fromStdString(_newName)) ? ExitStatus::Success
                                                                                         : ExitStatus::Found;
}

ExitStatus ScalesCommand::remove() {
    const auto scale = find();
    if (scale && !scale->isUser) {
        complain(QStringLiteral("\"") + scale->name + QStringLiteral("\" is a packaged scale and stays"));
        return ExitStatus::Found;
    }
    return scale && QUORColorScales::remove(scale->id) ? ExitStatus::Success : ExitStatus::Found;
}
