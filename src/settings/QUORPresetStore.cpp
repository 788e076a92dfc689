// SPDX-License-Identifier: MIT
#include "QUORPresetStore.h"

#include "QUORLog.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsTable.h"
#include "QUORSettingsWriter.h"

namespace {

/// Groups and layers alike: each has its keys.
template <class Call>
void forEach(const QUORDisplayState& state, Call call) {
    for (const QUORDisplayGroup::Ptr& group : state.getMembers()) {
        call(*group, QString::number(group->getKey()));
        for (const QUORDisplayLayer::Ptr& layer : group->getMembers()) {
            call(*layer, QString::number(layer->getKey()));
        }
    }
}

consteval const QUORSettingsKey& stateRow(std::string_view name) {
    return QUORSettingsTable::row("DISPLAYSTATE", name, "DISPLAYSTATES");
}
consteval const QUORSettingsKey& viewRow(std::string_view name) {
    return QUORSettingsTable::row("VIEWANGLE", name, "VIEWANGLES");
}

constexpr QUORSettingsKey STATE_NAME = stateRow("displayStateName");
constexpr QUORSettingsKey VISIBLE = stateRow("displayStateLayerVisible*");
constexpr QUORSettingsKey OPACITY = stateRow("displayStateLayerOpacity*");
constexpr QUORSettingsKey VIEW_NAME = viewRow("viewAngleName");
constexpr QUORSettingsKey VIEW_HEADING = viewRow("viewAngleHeading");
constexpr QUORSettingsKey VIEW_PITCH = viewRow("viewAnglePitch");
constexpr QUORSettingsKey VIEW_FIT = viewRow("viewAngleFit");

struct AxisRow {
    double QUORPoint3D::*axis;
    const QUORSettingsKey& position;
    const QUORSettingsKey& direction;
};

constexpr AxisRow AXES[] = {
    {&QUORPoint3D::x, viewRow("viewAngleCamPosX"), viewRow("viewAngleCamDirX")},
    {&QUORPoint3D::y, viewRow("viewAngleCamPosY"), viewRow("viewAngleCamDirY")},
    {&QUORPoint3D::z, viewRow("viewAngleCamPosZ"), viewRow("viewAngleCamDirZ")},
};

/// What differs between the two kinds of presets.
struct DisplayStates {
    static const QString& group() { return QUORConfig::DISPLAY_STATE_GROUP; }
    static const QString& array() { return QUORConfig::DISPLAY_STATE_ARRAY; }
    static constexpr bool LOGS_READING = false;

    static void read(const QUORSettingsReader& reader, QUORDisplayState& state) {
        state.setName(QUORSettingsTable::readText(reader, STATE_NAME));
        forEach(state, [&](QUORDisplayLayer& layer, const QString& suffix) {
            layer.setVisible(
                reader.readBool(QUORConfig::DISPLAY_STATE_LAYER_VISIBLE + suffix, VISIBLE.flag()));
            layer.setOpacity(reader.readIntClamped(QUORConfig::DISPLAY_STATE_LAYER_OPACITY + suffix,
                                                   OPACITY.whole(), int(OPACITY.minimum),
                                                   int(OPACITY.maximum)));
        });
    }
    static void write(QUORSettingsWriter& writer, const QUORDisplayState& state) {
        writer.write(QUORConfig::DISPLAY_STATE_NAME, state.getName());
        forEach(state, [&](const QUORDisplayLayer& layer, const QString& suffix) {
            writer.write(QUORConfig::DISPLAY_STATE_LAYER_VISIBLE + suffix, layer.isVisible());
            writer.write(QUORConfig::DISPLAY_STATE_LAYER_OPACITY + suffix, layer.getOpacity());
        });
    }
    static void copy(QUORDisplayState& to, const QUORDisplayState& from) { to.copyState(from); }
};

struct ViewAngles {
    static const QString& group() { return QUORConfig::VIEW_ANGLE_GROUP; }
    static const QString& array() { return QUORConfig::VIEW_ANGLE_ARRAY; }
    static constexpr bool LOGS_READING = true;

    static void read(const QUORSettingsReader& reader, QUORViewAngle& angle) {
        QUORPoint3D position;
        QUORPoint3D direction;
        angle.setName(QUORSettingsTable::readText(reader, VIEW_NAME));
        for (const AxisRow& row : AXES) {
            position.*row.axis = QUORSettingsTable::readNumber(reader, row.position);
            direction.*row.axis = QUORSettingsTable::readNumber(reader, row.direction);
        }
        angle.setCameraPosition(position);
        angle.setCameraDirection(direction);
        if (QUORSettingsTable::readFlag(reader, VIEW_FIT)) {
            angle.setFit(QUORViewAngle::Fit{QUORSettingsTable::readNumber(reader, VIEW_HEADING),
                                            QUORSettingsTable::readNumber(reader, VIEW_PITCH)});
        }
    }
    static void write(QUORSettingsWriter& writer, const QUORViewAngle& angle) {
        writer.write(QUORConfig::VIEW_ANGLE_NAME, angle.getName());
        const QUORPoint3D position = angle.getCameraPosition();
        const QUORPoint3D direction = angle.getCameraDirection();
        for (const AxisRow& row : AXES) {
            writer.write(row.position.nameText(), position.*row.axis);
            writer.write(row.direction.nameText(), direction.*row.axis);
        }
        // All three for every preset: what an element of the file held before must not stay behind.
        const QUORViewAngle::Fit fit = angle.getFit().value_or(QUORViewAngle::Fit{});
        writer.write(VIEW_HEADING.nameText(), fit.heading);
        writer.write(VIEW_PITCH.nameText(), fit.pitch);
        writer.write(VIEW_FIT.nameText(), angle.getFit().has_value());
    }
    static void copy(QUORViewAngle& to, const QUORViewAngle& from) {
        to.setCameraPosition(from.getCameraPosition());
        to.setCameraDirection(from.getCameraDirection());
        to.setFit(from.getFit());
    }
};

void logPreset(const char* action, int index) {
    QUORLog::Instance().logDebug(QLatin1String(action) + QStringLiteral(" preset: #") +
                                 QString::number(index));
}

void logName(const QString& name) {
    QUORLog::Instance().logDebug(QStringLiteral("name=") + name);
}

template <class Kind, class Preset>
void loadAll(Preset& current, QList<std::shared_ptr<Preset>>& presets) {
    const QUORConfig::Access settings;
    QUORSettingsReader reader(*settings);
    reader.beginGroup(Kind::group());
    const int size = reader.beginReadArray(Kind::array());
    for (int i = 0; i < size; ++i) {
        if (Kind::LOGS_READING && i > 0) {
            logPreset("Read", i - 1);
        }
        const auto preset = std::make_shared<Preset>();
        reader.setArrayIndex(i);
        Kind::read(reader, *preset);
        if (i == 0) {
            Kind::copy(current, *preset);
            continue;
        }
        if (Kind::LOGS_READING) {
            logName(preset->getName());
        }
        presets.append(preset);
    }
}

template <class Kind, class Preset>
bool saveAll(const Preset& current, const QList<std::shared_ptr<Preset>>& presets) {
    const QUORConfig::Access settings;
    QUORSettingsWriter writer(*settings, Kind::group());
    writer.beginWriteArray(Kind::array(), int(presets.size()) + 1);
    Preset custom;
    Kind::copy(custom, current);
    custom.setName(QUORConfig::VALUE_CUSTOM);
    writer.setArrayIndex(0);
    Kind::write(writer, custom);
    for (int i = 0; i < int(presets.size()); ++i) {
        const Preset& preset = *presets.at(i);
        logPreset("Write", i);
        logName(preset.getName());
        writer.setArrayIndex(i + 1);
        Kind::write(writer, preset);
    }
    writer.endArray();
    return writer.commit();
}

} // namespace

void QUORPresetStore::load(QUORDisplayState& current, QList<QUORDisplayState::Ptr>& presets) {
    loadAll<DisplayStates>(current, presets);
}

void QUORPresetStore::load(QUORViewAngle& current, QList<QUORViewAngle::Ptr>& presets) {
    loadAll<ViewAngles>(current, presets);
}

bool QUORPresetStore::save(const QUORDisplayState& current, const QList<QUORDisplayState::Ptr>& presets) {
    return saveAll<DisplayStates>(current, presets);
}

bool QUORPresetStore::save(const QUORViewAngle& current, const QList<QUORViewAngle::Ptr>& presets) {
    return saveAll<ViewAngles>(current, presets);
}
