// SPDX-License-Identifier: MIT
#include "QUORPresetChecks.h"

#include "QUORBackgroundSettings.h"
#include "QUORConfig.h"
#include "QUORGeneralSettings.h"
#include "QUORProductSettings.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsSearch.h"
#include "QUORSettingsTable.h"

#include <QMap>
#include <QSettings>

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

using Cost = QUORFinding::Cost;
using File = QUORSettingsKey::File;

const QString BACKGROUND = QStringLiteral("BACKGROUND");
const QString COLORS_FILE = QStringLiteral("QUOR3DColors");

QString quoted(const QString& text) {
    return QLatin1Char('"') + text.simplified() + QLatin1Char('"');
}

QString adviseName(const QString& name, const QStringList& known) {
    const QString near = QUORSettingsSearch::nearest(name, known);
    return near.isEmpty() ? QStringLiteral("known: ") + known.join(QStringLiteral(", "))
                          : QStringLiteral("write ") + near;
}

/// The products of the main settings file's groups, as product and configuration.
QList<std::pair<QString, QString>> storedProducts() {
    QList<std::pair<QString, QString>> products;
    QUORSettingsReader reader(QStringLiteral("QUOR3D"));
    for (const QString& group : reader.settings().childGroups()) {
        const QStringList parts = group.split(QLatin1Char(' '));
        if (parts.size() == 3 && parts.constFirst() == QUORConfig::PRODUCT_GROUP) {
            products.append({parts.at(1), parts.at(2)});
        }
    }
    return products;
}

/// The data types that products of a configuration may have.
QList<QUORDataType> dataTypesOf(const QString& configuration) {
    QList<QUORDataType> types;
    for (const QUORDataType::Row& row : QUORDataType::getRows()) {
        if (row.configuration != nullptr && configuration == QLatin1String(row.configuration)) {
            types.append(QUORDataType(row.code));
        }
    }
    return types;
}

struct Product {
    QString name;
    QString configuration;
    QList<QUORDataType> types;
    bool isThere = false;
    QString group() const {
        return QUORConfig::PRODUCT_GROUP + QLatin1Char(' ') + name + QLatin1Char(' ') + configuration;
    }
};

QList<Product> listProducts(const QUORProductSurvey* survey) {
    QList<Product> products;
    const auto find = [&](const QString& name, const QString& configuration) -> Product& {
        for (Product& product : products) {
            if (product.name == name && product.configuration == configuration) {
                return product;
            }
        }
        products.append({name, configuration, {}, false});
        return products.last();
    };
    if (survey != nullptr) {
        for (const QUORProductSurvey::Row& row : survey->getRows()) {
            Product& product = find(row.product, row.configuration);
            product.isThere = true;
            if (!product.types.contains(row.newest->getDataType())) {
                product.types.append(row.newest->getDataType());
            }
        }
    }
    for (const auto& [name, configuration] : storedProducts()) {
        Product& product = find(name, configuration);
        if (product.types.isEmpty()) {
            product.types = dataTypesOf(configuration);
        }
    }
    return products;
}

QString describeRange(const QUORDataType& type) {
    return QString::number(type.getMinDisplayValue()) + QStringLiteral(" to ") +
           QString::number(type.getMaxDisplayValue()) + QLatin1Char(' ') + type.getQuantityUnit();
}

void checkValue(QUORFindingCollector& findings, const Product& product, const QString& key, double value,
                bool isSurface) {
    const bool reached = std::ranges::any_of(product.types, [value](const QUORDataType& type) {
        return value >= type.getMinDisplayValue() && value <= type.getMaxDisplayValue();
    });
    if (!product.types.isEmpty() && !reached) {
        findings.addAt(
            Cost::Wrong, "value-out-of-data", File::Main, product.group(), key,
            QString::number(value) + QStringLiteral(" is no value of this product, which are ") +
                describeRange(product.types.constFirst()) +
                (isSurface ? QStringLiteral("; the surface shows nothing or everything") : QString()),
            QStringLiteral("write a value in ") + product.types.constFirst().getQuantityUnit());
    }
}

void checkRendering(QUORFindingCollector& findings, const Product& product) {
    if (product.types.isEmpty()) {
        findings.addAt(Cost::Remark, "unknown-configuration", File::Main, product.group(),
                       QStringLiteral("rendering"),
                       QStringLiteral("there are no products of configuration ") + product.configuration,
                       QStringLiteral("configurations are R, V, W and Z"));
        return;
    }
    const QUORProductSettings settings(product.name, product.configuration, product.types.constFirst(),
                                       QUORProductSettings::NotSaved);
    QUORSettingsReader reader(QStringLiteral("QUOR3D"));
    reader.beginGroup(product.group());
    if (settings.getRenderingType() == QUORProductSettings::Volume) {
        for (const char* key : {"volumevaluelow", "volumevaluehigh"}) {
            const QString name = QString::fromLatin1(key);
            if (const auto value = QUORSettingsReader::toDouble(reader.findText(name).value_or(QString()))) {
                checkValue(findings, product, name, *value, false);
            }
        }
        if (settings.getVolumeValueLow() > settings.getVolumeValueHigh()) {
            findings.addAt(Cost::Wrong, "volume-upside-down", File::Main, product.group(),
                           QStringLiteral("volumevaluelow"),
                           QStringLiteral("the volume begins above the value of its highest opacity"),
                           QStringLiteral("write a value below ") +
                               QString::number(settings.getVolumeValueHigh()));
        }
        return;
    }
    const int size = reader.beginReadArray(QUORConfig::PRODUCT_SURFACE_ARRAY, 4);
    for (int i = 0; i < size; ++i) {
        reader.setArrayIndex(i);
        if (const auto value = QUORSettingsReader::toDouble(
                reader.findText(QUORConfig::PRODUCT_SURFACE_VALUE).value_or(QString()))) {
            checkValue(findings, product,
                       QUORConfig::PRODUCT_SURFACE_ARRAY + QLatin1Char('/') + QString::number(i + 1) +
                           QLatin1Char('/') + QUORConfig::PRODUCT_SURFACE_VALUE,
                       *value, true);
        }
    }
    if (settings.getRenderingType() == QUORProductSettings::Surface && settings.getSurfaces().isEmpty()) {
        findings.addAt(Cost::Wrong, "no-surfaces", File::Main, product.group(),
                       QStringLiteral("surface/size"),
                       QStringLiteral("the product has no surface, nothing of it is drawn"),
                       QStringLiteral("add one: surface\\size=1 and surface\\1\\isovalue"));
    }
}

void checkScale(QUORFindingCollector& findings, const Product& product,
                const QUORPresetChecks::ScaleNames& scaleNames) {
    QUORSettingsReader reader(QStringLiteral("QUOR3D"));
    reader.beginGroup(product.group());
    const QString name =
        QUORSettingsTable::readText(reader, QUORSettingsTable::row("PRODUCT * *", "colormap"));
    for (const QUORDataType& type : product.types) {
        const QStringList known = scaleNames(type.getRawType());
        if (!known.contains(name)) {
            findings.addAt(product.isThere ? Cost::Wrong : Cost::Remark, "unknown-scale", File::Main,
                           product.group(), QStringLiteral("colormap"),
                           QStringLiteral("there is no colour scale ") + quoted(name) +
                               QStringLiteral(" for ") + type.getQuantityName() +
                               QStringLiteral(", scale 1 is used"),
                           adviseName(name, known));
            return;
        }
    }
}

/// The key that names the 2D product of a row's configuration.
QString keyOf2d(const QUORProductSurvey::Row& row) {
    const qsizetype index = QUORBackgroundSettings::getAllConfigurations().indexOf(row.configuration);
    return QStringLiteral("products/") + QString::number(index + 1) + QStringLiteral("/product");
}

/// Nobody can deliver what is no product.
QString adviseOn2d(const QUORProductSurvey::Row& row) {
    const QStringList known = QUORBackgroundSettings::getAll2DProducts();
    return known.contains(row.product2d)
               ? QStringLiteral("deliver ") + row.product2d + QStringLiteral(", or ")
               : QStringLiteral("name one of ") + known.join(QStringLiteral(", ")) + QStringLiteral(", or ");
}

int readSize(QUORSettingsReader& reader) {
    const int size = reader.beginReadArray(QStringLiteral("points"), 1000);
    reader.endArray();
    return size;
}

} // namespace

namespace QUORPresetChecks {

std::shared_ptr<QUORDisplayState> checkDisplayState(QUORFindingCollector& findings,
                                                    QUORGeneralSettings& general,
                                                    const QUORBackgroundSettings& background) {
    auto state = std::make_shared<QUORDisplayState>();
    general.loadDisplayStates(std::make_shared<QUORDisplayState>());
    const QString name = background.getDisplayStateName();
    const auto& presets = general.getDisplayStatePresets();
    const auto found = std::ranges::find(presets, name, [](const auto& preset) { return preset->getName(); });
    if (QUORConfig::isDefaultName(name)) {
        return state;
    }
    const QString key = QStringLiteral("displaystate");
    if (found == presets.cend()) {
        findings.addAt(Cost::Wrong, "unknown-state", File::Background, BACKGROUND, key,
                       QStringLiteral("there is no display state ") + quoted(name) +
                           QStringLiteral(", everything is shown"),
                       adviseName(name, general.getDisplayStateNames()));
        return state;
    }
    state->copyState(**found);
    const bool shown = state->getGroup(QUORDisplayState::RADAR_GROUP)->isVisible() &&
                       state->getLayer(QUORDisplayState::PRODUCT_3D_LAYER)->isVisible();
    if (!shown) {
        findings.addAt(
            Cost::Wrong, "product-hidden", File::Background, BACKGROUND, key,
            QStringLiteral("the display state ") + quoted(name) + QStringLiteral(" hides the 3D product"),
            QStringLiteral("quor3d states set ") + quoted(name) + QStringLiteral(" --show product"));
    }
    return state;
}

void checkViewAngle(QUORFindingCollector& findings, QUORGeneralSettings& general,
                    const QUORBackgroundSettings& background) {
    general.loadViewAngles(std::make_shared<QUORViewAngle>());
    const QString name = background.getViewAngleName();
    if (QUORConfig::isDefaultName(name)) {
        return;
    }
    const auto& presets = general.getViewAnglePresets();
    const auto found = std::ranges::find(presets, name, [](const auto& preset) { return preset->getName(); });
    const QString key = QStringLiteral("viewangle");
    if (found == presets.cend()) {
        findings.addAt(Cost::Wrong, "unknown-view", File::Background, BACKGROUND, key,
                       QStringLiteral("there is no view angle ") + quoted(name) +
                           QStringLiteral(", the one from above is used"),
                       adviseName(name, general.getViewAngleNames()));
        return;
    }
    const QUORPoint3D direction = (*found)->getCameraDirection();
    if (!(*found)->getFit() && direction.x == 0.0 && direction.y == 0.0 && direction.z == 0.0) {
        findings.addAt(Cost::Wrong, "view-without-direction", File::Background, BACKGROUND, key,
                       QStringLiteral("the view angle ") + quoted(name) +
                           QStringLiteral(" looks in no direction"),
                       QStringLiteral("make it again: quor3d views add ") + quoted(name) +
                           QStringLiteral(" --heading 0 --pitch 40"));
    }
}

void checkFurtherViews(QUORFindingCollector& findings, QUORGeneralSettings& general,
                       const QUORBackgroundSettings& background) {
    general.loadViewAngles(std::make_shared<QUORViewAngle>());
    general.loadDisplayStates(std::make_shared<QUORDisplayState>());
    const QList<QUORBackgroundSettings::View> views = background.getViews();
    for (qsizetype i = 1; i < views.size(); ++i) {
        const QString key = QStringLiteral("views/%1/").arg(i);
        if (const QString& name = views[i].viewAngle;
            name != views[0].viewAngle && !general.getViewAngleNames().contains(name)) {
            findings.addAt(Cost::Wrong, "unknown-view", File::Background, BACKGROUND,
                           key + QStringLiteral("viewangle"),
                           QStringLiteral("there is no view angle ") + quoted(name) +
                               QStringLiteral(", the one from above is used"),
                           adviseName(name, general.getViewAngleNames()));
        }
        if (const QString& name = views[i].displayState;
            name != views[0].displayState && !general.getDisplayStateNames().contains(name)) {
            findings.addAt(Cost::Wrong, "unknown-state", File::Background, BACKGROUND,
                           key + QStringLiteral("displaystate"),
                           QStringLiteral("there is no display state ") + quoted(name) +
                               QStringLiteral(", everything is shown"),
                           adviseName(name, general.getDisplayStateNames()));
        }
    }
}

void checkProducts(QUORFindingCollector& findings, const QUORProductSurvey* survey,
                   const ScaleNames& scaleNames) {
    for (const Product& product : listProducts(survey)) {
        checkRendering(findings, product);
        if (scaleNames && !product.types.isEmpty()) {
            checkScale(findings, product, scaleNames);
        }
    }
}

void checkColors(QUORFindingCollector& findings) {
    QUORSettingsReader reader(COLORS_FILE);
    const QStringList groups = reader.settings().childGroups();
    for (const QString& group : groups) {
        if (!group.startsWith(QLatin1String("COLORSCALE "))) {
            continue;
        }
        reader.beginGroup(group);
        const int set =
            QUORSettingsTable::readWhole(reader, QUORSettingsTable::row("COLORSCALE *", "colorset_index"));
        const int seams = readSize(reader);
        QList<double> values;
        reader.beginReadArray(QStringLiteral("points"), seams);
        for (int i = 0; i < seams; ++i) {
            reader.setArrayIndex(i);
            values.append(QUORSettingsTable::readNumber(
                reader, QUORSettingsTable::row("COLORSCALE *", "seam", "points")));
        }
        reader.endArray();
        reader.endGroup();
        const QString setGroup = QStringLiteral("COLORSET ") + QString::number(set);
        reader.beginGroup(setGroup);
        const int colors = readSize(reader);
        reader.endGroup();
        if (seams == 0) {
            findings.addAt(Cost::Wrong, "scale-without-size", File::Colors, group,
                           QStringLiteral("points/size"),
                           QStringLiteral("the scale has no seams, a grey one is used"),
                           QStringLiteral("write points\\size, the number of its seams"));
        } else if (!std::ranges::is_sorted(values)) {
            findings.addAt(
                Cost::Wrong, "seams-unordered", File::Colors, group, QStringLiteral("points/1/seam"),
                QStringLiteral("the seams are not in ascending order"), QStringLiteral("sort them"));
        }
        if (!groups.contains(setGroup)) {
            findings.addAt(Cost::Wrong, "unknown-set", File::Colors, group, QStringLiteral("colorset_index"),
                           QStringLiteral("there is no ") + setGroup +
                               QStringLiteral(", a grey scale is used"),
                           QStringLiteral("name the number of a COLORSET"));
        } else if (colors == 0) {
            findings.addAt(
                Cost::Wrong, "set-without-size", File::Colors, setGroup, QStringLiteral("points/size"),
                QStringLiteral("the colour set has no size, ") + group + QStringLiteral(" is grey"),
                QStringLiteral("write points\\size, the number of its colours"));
        }
    }
}

void checkPairing(QUORFindingCollector& findings, const QUORProductSurvey& survey, int wait2d) {
    const bool waits = wait2d >= 0;
    const auto needs = [](const QUORProductSurvey::Row& row) { return !row.product2d.isEmpty(); };
    const bool none = std::ranges::none_of(
        survey.getRows(), [&](const QUORProductSurvey::Row& row) { return !needs(row) || row.with2d > 0; });
    // What one site's configurations lack for one reason is one finding.
    QMap<QString, QList<QUORProductSurvey::Row>> missing;
    for (const QUORProductSurvey::Row& row : survey.getRows()) {
        if (needs(row) && !row.reasons.isEmpty() && row.with2d == 0) {
            missing[row.site + QLatin1Char('\n') + row.detail].append(row);
        } else if (needs(row) && !row.reasons.isEmpty()) {
            const int without = std::accumulate(row.reasons.cbegin(), row.reasons.cend(), 0);
            findings.addAt(Cost::Remark, "some-without-2d", File::Background, BACKGROUND, keyOf2d(row),
                           QString::number(without) + QStringLiteral(" of ") +
                               QString::number(without + row.with2d) + QStringLiteral(" volumes of ") +
                               row.site + QLatin1Char(' ') + row.configuration +
                               QStringLiteral(" have no 2D product: ") + row.detail,
                           {});
        }
    }
    for (const QList<QUORProductSurvey::Row>& rows : std::as_const(missing)) {
        const QUORProductSurvey::Row& first = rows.constFirst();
        QStringList configurations;
        for (const QUORProductSurvey::Row& row : rows) {
            configurations.append(row.configuration);
        }
        const QString images = first.site + QLatin1Char(' ') + configurations.join(QStringLiteral(", "));
        const QString cost =
            waits ? QStringLiteral("images of ") + images + QStringLiteral(" come ") +
                        QString::number(wait2d) + QStringLiteral(" s late and without their 2D layer")
                  : QStringLiteral("no image of ") + images + QStringLiteral(": the 2D layer is shown");
        findings.addAt(waits  ? Cost::Wrong
                       : none ? Cost::NoImages
                              : Cost::Missing,
                       "no-2d-product", File::Background, BACKGROUND, keyOf2d(first),
                       cost + QStringLiteral(" and its product is missing: ") + first.detail,
                       adviseOn2d(first) + QStringLiteral("do without: quor3d set BACKGROUND/") +
                           keyOf2d(first) + QStringLiteral(" '(none)'"));
    }
}

} // namespace QUORPresetChecks
