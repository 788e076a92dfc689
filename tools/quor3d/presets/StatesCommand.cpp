// SPDX-License-Identifier: MIT
#include "StatesCommand.h"

#include "PresetNames.h"
#include "QUORBackgroundSettings.h"
#include "QUORLog.h"
#include "QUORPresetStore.h"
#include "QUORSettingsInForce.h"
#include "TextTable.h"
#include "ToolApplication.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>

namespace {

struct Stored {
    QUORDisplayState current;
    QList<QUORDisplayState::Ptr> states;
    Stored() { QUORPresetStore::load(current, states); }
    ExitStatus save() const {
        return QUORPresetStore::save(current, states) ? ExitStatus::Success : ExitStatus::Found;
    }
};

using Row = QUORDisplayState::Row;

/// A layer is seen when its group is shown too.
bool isSeen(const QUORDisplayState& state, const Row& row) {
    return state.getLayer(row.group)->isVisible() && state.getLayer(row.key)->isVisible();
}

QStringList describe(const QUORDisplayState& state, bool seen) {
    QStringList words;
    for (const Row& row : QUORDisplayState::getRows()) {
        if (!row.isGroup() && isSeen(state, row) == seen) {
            words.append(QString::fromLatin1(row.word));
        }
    }
    return words;
}

void setVisible(QUORDisplayState& state, const std::vector<std::string>& words, bool visible) {
    for (const std::string& word : words) {
        const auto row = std::ranges::find(QUORDisplayState::getRows(), word, &Row::word);
        const QUORDisplayLayer::Ptr layer = state.getLayer(row->key);
        layer->setVisible(visible);
        layer->setOpacity(visible ? 100 : layer->getOpacity());
        if (visible) {
            state.getLayer(row->group)->setVisible(true);
        }
    }
}

/// Each group with its layers.
std::string listWords() {
    std::string list;
    for (const Row& row : QUORDisplayState::getRows()) {
        list += row.isGroup() ? (list.empty() ? "" : "; ") + std::string(row.word) + " (group of) "
                              : (list.ends_with(' ') ? "" : ", ") + std::string(row.word);
    }
    return list;
}

} // namespace

std::string StatesCommand::examples() const {
    return "  quor3d states                                 the list\n"
           "  quor3d states add '3D only' --hide 2d         everything but the 2D product\n"
           "  quor3d states set '3D only' --hide landmarks  change it\n"
           "  quor3d states rename '3D only' Plain\n"
           "  quor3d states remove Plain\n"
           "  quor3d set displaystate '3D only'             use it\n"
           "Layers: " +
           listWords() + ".\n";
}

void StatesCommand::addOptions(CLI::App& app) {
    _user.addOption(app);
    _json.addOption(app);
    app.require_subcommand(0, 1);
    std::vector<std::string> words;
    for (const Row& row : QUORDisplayState::getRows()) {
        words.emplace_back(row.word);
    }
    const auto nested = [&](const char* word, const char* text, Action action) {
        CLI::App* const group = app.add_subcommand(word, text)->fallthrough();
        group->callback([this, action] { _action = action; });
        return group;
    };
    nested("list", "List the states", Action::List);
    for (const auto& [word, text, action] :
         {std::tuple{"add", "Add a state that shows everything, but for what is hidden", Action::Add},
          std::tuple{"set", "Change a state", Action::Set}}) {
        CLI::App* const group = nested(word, text, action);
        group->add_option("NAME", _name, "Its name")->required()->type_name("");
        group->add_option("--show", _shown, "Layers to show")
            ->delimiter(',')
            ->check(CLI::IsMember(words))
            ->type_name("LAYER,...");
        group->add_option("--hide", _hidden, "Layers to hide")
            ->delimiter(',')
            ->check(CLI::IsMember(words))
            ->type_name("LAYER,...");
    }
    CLI::App* const rename = nested("rename", "Rename a state", Action::Rename);
    rename->add_option("OLD", _name, "Its name")->required()->type_name("");
    rename->add_option("NEW", _newName, "The new one")->required()->type_name("");
    nested("remove", "Remove a state", Action::Remove)
        ->add_option("NAME", _name, "Its name")
        ->required()
        ->type_name("");
}

ExitStatus StatesCommand::run() {
    const ToolApplication application;
    if (_action == Action::List) {
        _user.become();
        return list();
    }
    _user.becomeToChange(
        [] { return QUORSettingsInForce::getFiles(QUORSettingsKey::File::Main).constFirst(); });
    QUORLog::Instance().logOpen({});
    if (_action == Action::Rename) {
        return rename();
    }
    return _action == Action::Remove ? remove() : change();
}

ExitStatus StatesCommand::list() {
    const Stored stored;
    const QString used = QUORBackgroundSettings().getDisplayStateName();
    QJsonArray array;
    TextTable table;
    table.add({QStringLiteral("Default"), QStringLiteral("shows everything, built in"),
               used == QUORConfig::defaultValueTranslated() ? QStringLiteral("in use") : QString()});
    for (const QUORDisplayState::Ptr& state : stored.states) {
        const bool inUse = state->getName() == used;
        array.append(QJsonObject{{"name", state->getName()},
                                 {"used", inUse},
                                 {"shown", QJsonArray::fromStringList(describe(*state, true))},
                                 {"hidden", QJsonArray::fromStringList(describe(*state, false))}});
        table.add({state->getName(),
                   QStringLiteral("shows ") + describe(*state, true).join(QStringLiteral(", ")),
                   inUse ? QStringLiteral("in use") : QString()});
    }
    if (_json.isWanted()) {
        JsonOutput::print(array);
    } else {
        table.print();
    }
    return ExitStatus::Success;
}

ExitStatus StatesCommand::change() {
    Stored stored;
    const QString name = QString::fromStdString(_name);
    QUORDisplayState::Ptr state;
    if (_action == Action::Add) {
        if (!PresetNames::isFree(stored.states, name)) {
            return ExitStatus::Found;
        }
        state = std::make_shared<QUORDisplayState>();
        state->setName(name);
        stored.states.append(state);
    } else {
        state = PresetNames::find(stored.states, name);
    }
    if (!state) {
        return ExitStatus::Found;
    }
    setVisible(*state, _shown, true);
    setVisible(*state, _hidden, false);
    std::cout << _name << " shows " << describe(*state, true).join(QStringLiteral(", ")).toStdString()
              << '\n';
    return stored.save();
}

ExitStatus StatesCommand::rename() {
    Stored stored;
    const auto state = PresetNames::find(stored.states, QString::fromStdString(_name));
    const QString name = QString::fromStdString(_newName);
    if (!state || !PresetNames::isFree(stored.states, name)) {
        return ExitStatus::Found;
    }
    state->setName(name);
    return stored.save();
}

ExitStatus StatesCommand::remove() {
    Stored stored;
    const auto state = PresetNames::find(stored.states, QString::fromStdString(_name));
    if (!state) {
        return ExitStatus::Found;
    }
    stored.states.removeOne(state);
    return stored.save();
}
