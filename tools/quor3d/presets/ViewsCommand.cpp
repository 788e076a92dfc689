// SPDX-License-Identifier: MIT
#include "ViewsCommand.h"

#include "PresetNames.h"
#include "QUORBackgroundSettings.h"
#include "QUORGeneralSettings.h"
#include "QUORLog.h"
#include "QUORPresetStore.h"
#include "QUORSettingsInForce.h"
#include "TextTable.h"
#include "ToolApplication.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace {

using Views = QList<QUORViewAngle::Ptr>;

struct Stored {
    QUORViewAngle current;
    Views views;
    Stored() { QUORPresetStore::load(current, views); }
    ExitStatus save() const {
        return QUORPresetStore::save(current, views) ? ExitStatus::Success : ExitStatus::Found;
    }
};

QUORViewPlan planOf(const QUORViewAngle& view) {
    if (const auto& fit = view.getFit()) {
        return {fit->heading, fit->pitch, 0.0};
    }
    return QUORViewPlan::of({view.getCameraPosition(), view.getCameraDirection()});
}

QString rounded(double value) {
    return QString::number(value, 'f', 1);
}

QJsonArray toJson(const QUORPoint3D& point) {
    return {point.x, point.y, point.z};
}

/// How far from the site a camera stands, in words.
QString describeDistance(const QUORViewAngle& view) {
    return view.getFit() ? QStringLiteral("fits every product")
                         : QStringLiteral("distance ") + rounded(planOf(view).distance / 1000.0) +
                               QStringLiteral(" km");
}

} // namespace

std::string ViewsCommand::examples() const {
    return "  quor3d views                                                    the list\n"
           "  quor3d views add 'From the south' --heading 0 --pitch 40        every product fits\n"
           "  quor3d views add East --heading 270 --pitch 25 --distance 400   from the east, 400 km away\n"
           "  quor3d views rename East 'From the east'\n"
           "  quor3d views remove East\n"
           "  quor3d set viewangle 'From the south'                           use it\n";
}

void ViewsCommand::addOptions(CLI::App& app) {
    _user.addOption(app);
    _json.addOption(app);
    app.require_subcommand(0, 1);
    const auto nested = [&](const char* word, const char* text, Action action) {
        CLI::App* const group = app.add_subcommand(word, text)->fallthrough();
        group->callback([this, action] { _action = action; });
        return group;
    };
    nested("list", "List the views", Action::List);
    CLI::App* const add = nested("add", "Add a view of the radar site", Action::Add);
    add->add_option("NAME", _name, "Its name")->required()->type_name("");
    add->add_option("--heading", _heading,
                    "Degrees from north where the camera looks: 0 from the south, 270 from the east")
        ->check(CLI::Range(0.0, 360.0))
        ->capture_default_str();
    add->add_option("--pitch", _pitch, "Degrees above the horizon from which it looks down")
        ->check(CLI::Range(0.0, 90.0))
        ->capture_default_str();
    CLI::Option* const distance =
        add->add_option("--distance", _distance, "Kilometres from the site")->check(CLI::Range(0.1, 20000.0));
    add->add_flag("--fit", _fits, "As far away as each product needs to fit into the picture (the default)")
        ->excludes(distance);
    add->add_option("--extent", _extent,
                    "One distance for all products: as far as data of this width, length and height in "
                    "kilometres needs")
        ->expected(3)
        ->excludes(distance);
    CLI::App* const rename = nested("rename", "Rename a view", Action::Rename);
    rename->add_option("OLD", _name, "Its name")->required()->type_name("");
    rename->add_option("NEW", _newName, "The new one")->required()->type_name("");
    nested("remove", "Remove a view", Action::Remove)
        ->add_option("NAME", _name, "Its name")
        ->required()
        ->type_name("");
}

ExitStatus ViewsCommand::run() {
    const ToolApplication application;
    if (_action == Action::List) {
        _user.become();
        return list();
    }
    _user.becomeToChange(
        [] { return QUORSettingsInForce::getFiles(QUORSettingsKey::File::Main).constFirst(); });
    QUORLog::Instance().logOpen({});
    switch (_action) {
    case Action::Add:
        return add();
    case Action::Rename:
        return rename();
    default:
        return remove();
    }
}

ExitStatus ViewsCommand::list() {
    const Stored stored;
    const QString used = QUORBackgroundSettings().getViewAngleName();
    if (_json.isWanted()) {
        QJsonArray array;
        for (const QUORViewAngle::Ptr& view : stored.views) {
            const QUORViewPlan plan = planOf(*view);
            QJsonObject object{{"name", view->getName()},
                               {"used", view->getName() == used},
                               {"heading_deg", plan.heading},
                               {"pitch_deg", plan.pitch},
                               {"fit", view->getFit().has_value()}};
            if (!view->getFit()) {
                object["position_m"] = toJson(view->getCameraPosition());
                object["direction"] = toJson(view->getCameraDirection());
                object["distance_km"] = plan.distance / 1000.0;
            }
            array.append(object);
        }
        JsonOutput::print(array);
        return ExitStatus::Success;
    }
    TextTable table;
    table.add({QStringLiteral("Default"),
               QStringLiteral("from above, built in"),
               {},
               {},
               used == QUORConfig::defaultValueTranslated() ? QStringLiteral("in use") : QString()});
    for (const QUORViewAngle::Ptr& view : stored.views) {
        const QUORViewPlan plan = planOf(*view);
        table.add({view->getName(), QStringLiteral("heading ") + rounded(plan.heading),
                   QStringLiteral("pitch ") + rounded(plan.pitch), describeDistance(*view),
                   view->getName() == used ? QStringLiteral("in use") : QString()});
    }
    table.print();
    return ExitStatus::Success;
}

QUORViewPlan ViewsCommand::makePlan() const {
    QUORViewPlan plan{_heading, _pitch, _distance * 1000.0};
    if (!_extent.empty()) {
        const QUORBackgroundSettings background;
        const QUORPoint3D size{_extent.at(0) * 1000.0, _extent.at(1) * 1000.0,
                               _extent.at(2) * 1000.0 * QUORGeneralSettings().getVerticalScale()};
        plan.distance = plan.findFit(size, background.getWidth(), background.getHeight());
    }
    return plan;
}

ExitStatus ViewsCommand::add() {
    Stored stored;
    const QString name = QString::fromStdString(_name);
    if (!PresetNames::isFree(stored.views, name)) {
        return ExitStatus::Found;
    }
    const auto view = std::make_shared<QUORViewAngle>();
    view->setName(name);
    const QUORViewPlan plan = makePlan();
    if (plan.distance > 0.0) {
        const QUORViewGeometry::View camera = plan.toView();
        view->setCameraPosition(camera.position);
        view->setCameraDirection(camera.direction);
    } else {
        view->setFit(QUORViewAngle::Fit{_heading, _pitch});
    }
    stored.views.append(view);
    std::cout << _name << ": heading " << _heading << ", pitch " << _pitch << ", "
              << describeDistance(*view).toStdString() << '\n';
    return stored.save();
}

ExitStatus ViewsCommand::rename() {
    Stored stored;
    const auto view = PresetNames::find(stored.views, QString::fromStdString(_name));
    const QString name = QString::fromStdString(_newName);
    if (!view || !PresetNames::isFree(stored.views, name)) {
        return ExitStatus::Found;
    }
    view->setName(name);
    return stored.save();
}

ExitStatus ViewsCommand::remove() {
    Stored stored;
    const auto view = PresetNames::find(stored.views, QString::fromStdString(_name));
    if (!view) {
        return ExitStatus::Found;
    }
    stored.views.removeOne(view);
    return stored.save();
}
