// SPDX-License-Identifier: MIT
#include "QUORViewerPresets.h"

#include "QUORPresetStore.h"

#include <algorithm>

namespace {

/// Everything that is stored, held for as long as it takes to change it.
struct Stored {
    QUORConfig::Access held;
    QUORViewAngle currentView;
    QUORDisplayState currentState;
    QList<QUORViewAngle::Ptr> views;
    QList<QUORDisplayState::Ptr> states;

    Stored() {
        QUORPresetStore::load(currentView, views);
        QUORPresetStore::load(currentState, states);
    }
    QUORViewerPresets::Result save(bool changedViews, bool changedStates) const {
        const bool good = (!changedViews || QUORPresetStore::save(currentView, views)) &&
                          (!changedStates || QUORPresetStore::save(currentState, states));
        return good ? QUORViewerPresets::Result::Done : QUORViewerPresets::Result::NotStored;
    }
};

template <class Preset>
std::shared_ptr<Preset> findIn(const QList<std::shared_ptr<Preset>>& presets, const QString& name) {
    const auto found = std::find_if(presets.cbegin(), presets.cend(),
                                    [&](const auto& preset) { return preset->getName() == name; });
    return found != presets.cend() ? *found : nullptr;
}

template <class Preset>
std::shared_ptr<Preset> provide(QList<std::shared_ptr<Preset>>& presets, const QString& name) {
    auto preset = findIn(presets, name);
    if (!preset) {
        preset = std::make_shared<Preset>();
        preset->setName(name);
        presets.append(preset);
    }
    return preset;
}

/// The built-in presets have these, and one without a name cannot be chosen.
bool isGood(const QString& name) {
    return !name.trimmed().isEmpty() && !QUORConfig::isDefaultName(name) && name != QUORConfig::VALUE_CUSTOM;
}

} // namespace

namespace QUORViewerPresets {

QStringList getNames() {
    const Stored stored;
    QStringList names;
    for (const auto& view : stored.views) {
        names.append(view->getName());
    }
    for (const auto& state : stored.states) {
        names.append(state->getName());
    }
    names.removeDuplicates();
    return names;
}

Preset find(const QString& name) {
    const Stored stored;
    Preset preset;
    if (const auto view = findIn(stored.views, name)) {
        preset.fit = view->getFit();
        if (!preset.fit) {
            preset.view = {view->getCameraPosition(), view->getCameraDirection()};
        }
    }
    preset.state = findIn(stored.states, name);
    return preset;
}

Result save(const QString& name, const QUORViewGeometry::View& view, const QUORDisplayState& state) {
    if (!isGood(name)) {
        return Result::BadName;
    }
    Stored stored;
    const auto angle = provide(stored.views, name);
    angle->setFit(std::nullopt);
    angle->setCameraPosition(view.position);
    angle->setCameraDirection(view.direction);
    provide(stored.states, name)->copyState(state);
    return stored.save(true, true);
}

Result rename(const QString& name, const QString& newName) {
    if (!isGood(newName)) {
        return Result::BadName;
    }
    const Stored stored;
    if (findIn(stored.views, newName) || findIn(stored.states, newName)) {
        return Result::NameTaken;
    }
    const auto view = findIn(stored.views, name);
    const auto state = findIn(stored.states, name);
    if (!view && !state) {
        return Result::NoSuchName;
    }
    if (view) {
        view->setName(newName);
    }
    if (state) {
        state->setName(newName);
    }
    return stored.save(view != nullptr, state != nullptr);
}

Result remove(const QString& name) {
    Stored stored;
    const auto named = [&](const auto& preset) { return preset->getName() == name; };
    const bool views = stored.views.removeIf(named) > 0;
    const bool states = stored.states.removeIf(named) > 0;
    return views || states ? stored.save(views, states) : Result::NoSuchName;
}

} // namespace QUORViewerPresets
