// SPDX-License-Identifier: MIT
#include "QUORColormap.h"

#include "QUORDataType.h"
#include "QUORLog.h"
#include "QUORLogOnce.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsTable.h"

#include <QHash>
#include <QMutex>
#include <QMutexLocker>
#include <QRegularExpression>

#include <vtkColorTransferFunction.h>
#include <vtkScalarBarActor.h>
#include <vtkTextProperty.h>

#include <algorithm>
#include <functional>
#include <limits>

namespace {

const QString COLORS_FILE = QStringLiteral("QUOR3DColors");
const QString SCALE_GROUP = QStringLiteral("COLORSCALE");
const QString SET_GROUP = QStringLiteral("COLORSET");
const QString MAPPING_GROUP = QStringLiteral("DATAMAPPING");
const QString MAPPING_ARRAY = QStringLiteral("data");
const QString POINTS_ARRAY = QStringLiteral("points");

consteval const QUORSettingsKey& scaleRow(std::string_view name, std::string_view array = {}) {
    return QUORSettingsTable::row("COLORSCALE *", name, array);
}
consteval const QUORSettingsKey& setRow(std::string_view name, std::string_view array = {}) {
    return QUORSettingsTable::row("COLORSET *", name, array);
}
consteval const QUORSettingsKey& mappingRow(std::string_view name) {
    return QUORSettingsTable::row("DATAMAPPING", name, "data");
}
constexpr QUORSettingsKey LABEL_FORMAT = scaleRow("label_format");

constexpr int FALLBACK_SCALE = 1;
constexpr int GREY_COLORS = 16;
constexpr int LINEAR_COLORS = 2048;
/// Of a display value, far below the difference of two stored ones.
constexpr double ROUNDING = 1e-6;
/// A step holds its colour until the next seam, as its band in the colour bar does.
constexpr double STEP_MIDPOINT = 1.0;
/// Colours between two seams where stored values do not go with display values: into so many parts, unless
/// the middle is off by less than this part of the interval.
constexpr int MIXTURES = 24;
constexpr double STRAIGHT = 0.02;
/// Of the group name "COLORSCALE 12" and the like.
constexpr int ID_POSITION = 11;
constexpr int ID_LENGTH = 3;

QString numberedGroup(const QString& group, int number) {
    return group + QLatin1Char(' ') + QString::number(number);
}

/// A file is read for every image, and what is wrong with it is said once.
void report(const QString& map, const char* problem, bool isWrong) {
    const QString subject = QStringLiteral("Color map ") + map + QLatin1Char(' ') + QLatin1String(problem);
    if (isWrong) {
        QUORLogOnce::logWarning(subject, subject);
    } else {
        QUORLogOnce::forget(subject);
    }
}

/// The colour bar hands this to the C library together with one double and a buffer of limited size.
QString checkedLabelFormat(const QString& format, const QString& scale) {
    static const QRegularExpression oneDouble(
        QStringLiteral("^[-+ 0#]*[0-9]{0,2}(\\.[0-9]{0,2})?[eEfFgG][^%]{0,32}$"));
    const bool isSafe = oneDouble.match(format).hasMatch();
    report(scale, "has a label_format that is not the format of one number", !isSafe);
    return QLatin1Char('%') + (isSafe ? format : LABEL_FORMAT.defaultText());
}

QUORColormap::Point readPoint(const QUORSettingsReader& reader) {
    QUORColormap::Point point;
    using QUORSettingsTable::readWhole;
    point.lowerRed = readWhole(reader, setRow("lower/r", "points"));
    point.lowerGreen = readWhole(reader, setRow("lower/g", "points"));
    point.lowerBlue = readWhole(reader, setRow("lower/b", "points"));
    point.upperRed = readWhole(reader, setRow("upper/r", "points"));
    point.upperGreen = readWhole(reader, setRow("upper/g", "points"));
    point.upperBlue = readWhole(reader, setRow("upper/b", "points"));
    point.constant = point.lowerRed == point.upperRed && point.lowerGreen == point.upperGreen &&
                     point.lowerBlue == point.upperBlue;
    return point;
}

QUORColormap::Type typeOf(const QVector<QUORColormap::Point>& points) {
    if (points.isEmpty()) {
        return QUORColormap::PiecewiseLinear;
    }
    const bool constant = points.constFirst().constant;
    const auto last = std::max(points.cbegin() + 1, points.cend() - 1);
    const bool mixed = std::any_of(points.cbegin() + 1, last,
                                   [constant](const auto& point) { return point.constant != constant; });
    if (mixed) {
        return QUORColormap::Mixed;
    }
    return constant ? QUORColormap::PiecewiseConstant : QUORColormap::PiecewiseLinear;
}

void addNode(vtkColorTransferFunction& function, double position, const std::array<double, 3>& color,
             bool step) {
    if (step) {
        function.AddRGBPoint(position, color[0], color[1], color[2], STEP_MIDPOINT, 1.0);
    } else {
        function.AddRGBPoint(position, color[0], color[1], color[2]);
    }
}

/// The maps as the colours files define them, until one of these changes: an image asks for several, and the
/// settings layer reads a large file anew each time. Any thread may call.
template <class Read>
QUORColormap recall(const QString& key, Read read) {
    constexpr qsizetype MAXIMUM = 100;
    static QMutex mutex;
    static QString known;
    static QHash<QString, QUORColormap> maps;
    const QString stamp = QUORColormap::makeStamp();
    const QMutexLocker lock(&mutex);
    if (stamp != known || maps.size() >= MAXIMUM) {
        known = stamp;
        maps.clear();
    }
    if (!maps.contains(key)) {
        maps.insert(key, read());
    }
    return maps.value(key);
}

/// Calls `read` with the reader standing on the data type's entry; the fallback when there is no entry.
template <class Value, class Read>
Value readMapping(QUORSettingsReader& reader, int rawType, Value fallback, Read read) {
    reader.beginGroup(MAPPING_GROUP);
    const int count = reader.beginReadArray(MAPPING_ARRAY);
    Value value = std::move(fallback);
    if (rawType >= 0 && rawType < count) {
        reader.setArrayIndex(rawType);
        value = read(reader);
    }
    reader.endArray();
    reader.endGroup();
    return value;
}

int readColorGroup(QUORSettingsReader& reader, int rawType) {
    return readMapping(reader, rawType, 0, [](const QUORSettingsReader& entry) {
        return QUORSettingsTable::readWhole(entry, mappingRow("data_index"));
    });
}

} // namespace

QUORColormap::QUORColormap()
    : _name(QStringLiteral("Fixed")),
      _colorSetName(QStringLiteral("Fixed")),
      _labelFormat(QLatin1Char('%') + LABEL_FORMAT.defaultText()),
      _dataUnits(scaleRow("data_units").defaultText()) {
    for (int k = 0; k < GREY_COLORS; ++k) {
        const int lower = 31 + 14 * k;
        const int upper = 45 + 14 * k;
        _colors.append({lower, lower, lower, upper, upper, upper, false});
        _scale.append(16.0 * k);
    }
}

QUORColormap::QUORColormap(const QString& name, const QUORDataType& dataType, ValueRange range) {
    const int rawType = dataType.getRawType();
    *this = recall(QString::number(rawType) + QLatin1Char(' ') + name, [&] {
        QUORSettingsReader reader(COLORS_FILE);
        QUORColormap map;
        map.load(reader, findScale(readScales(reader, rawType), name, rawType));
        return map;
    });
    build(name, dataType, range);
}

QUORColormap::QUORColormap(int scaleId, const QUORDataType& dataType, ValueRange range) {
    load(scaleId);
    build(QString::number(scaleId), dataType, range);
}

QUORColormap::QUORColormap(const QUORColormap& other) {
    *this = other;
}

QUORColormap::QUORColormap(const QUORColormap& other, const QUORDataType& dataType, ValueRange range)
    : QUORColormap(other) {
    changeValueRange(range, dataType);
    construct();
}

QUORColormap& QUORColormap::operator=(const QUORColormap& other) {
    if (this == &other) {
        return *this;
    }
    _type = other._type;
    _colorSpace = other._colorSpace;
    _valueRange = other._valueRange;
    _name = other._name;
    _colorSetName = other._colorSetName;
    _lowSaturate = other._lowSaturate;
    _highSaturate = other._highSaturate;
    _labelFormat = other._labelFormat;
    _dataUnits = other._dataUnits;
    _colors = other._colors;
    _scale = other._scale;
    _limits = other._limits;
    construct();
    return *this;
}

QUORColormap::~QUORColormap() = default;

void QUORColormap::build(const QString& wanted, const QUORDataType& dataType, ValueRange range) {
    const bool isUsable = !_colors.isEmpty() && !_scale.isEmpty();
    report(wanted + QStringLiteral(" of data type ") + QString::number(dataType.getRawType()),
           "has no colors or no seams, using a grey map", !isUsable);
    if (!isUsable) {
        useGrey(dataType);
    }
    changeValueRange(range, dataType);
    construct();
}

void QUORColormap::useGrey(const QUORDataType& dataType) {
    *this = QUORColormap();
    const double minimum = dataType.getMinDisplayValue();
    const double step = (dataType.getMaxDisplayValue() - minimum) / (GREY_COLORS - 1);
    for (int k = 0; k < GREY_COLORS; ++k) {
        _scale[k] = minimum + k * step;
    }
    _dataUnits = dataType.getQuantityUnit();
}

void QUORColormap::load(int scaleId) {
    QUORSettingsReader reader(COLORS_FILE);
    load(reader, scaleId);
}

void QUORColormap::load(QUORSettingsReader& reader, int scaleId) {
    const QString id = QString::number(scaleId);
    QUORLog::Instance().logDebug(QStringLiteral("QUORColormap::load(scaleId==") + id +
                                 QStringLiteral(") begin"));
    loadColorSet(reader, loadScale(reader, scaleId));
    QUORLog::Instance().logDebug(QStringLiteral("QUORColormap::load(scaleId==") + id +
                                 QStringLiteral(") end"));
}

int QUORColormap::loadScale(QUORSettingsReader& reader, int scaleId) {
    using namespace QUORSettingsTable;
    reader.beginGroup(numberedGroup(SCALE_GROUP, scaleId));
    _name = readText(reader, scaleRow("name"));
    const QString subject = _name + QStringLiteral(" (") + QString::number(scaleId) + QLatin1Char(')');
    const int setId = readWhole(reader, scaleRow("colorset_index"));
    _lowSaturate = readFlag(reader, scaleRow("low_saturate"));
    _highSaturate = readFlag(reader, scaleRow("hi_saturate"));
    _labelFormat = checkedLabelFormat(readText(reader, LABEL_FORMAT), subject);
    _dataUnits = readText(reader, scaleRow("data_units"));
    _scale.resize(reader.beginReadArray(POINTS_ARRAY));
    for (int i = 0; i < _scale.size(); ++i) {
        reader.setArrayIndex(i);
        _scale[i] = readNumber(reader, scaleRow("seam", "points"));
    }
    reader.endArray();
    reader.endGroup();
    _valueRange = Display;
    _limits.reset();
    report(subject, "has seams that are not in ascending order",
           !std::is_sorted(_scale.cbegin(), _scale.cend()));
    QUORLog::Instance().logDebug(QStringLiteral("    color scale ") + _name + QStringLiteral(" (") +
                                 QString::number(getNDefinedSeams()) + QStringLiteral(" seams)"));
    return setId;
}

void QUORColormap::loadColorSet(QUORSettingsReader& reader, int setId) {
    reader.beginGroup(numberedGroup(SET_GROUP, setId));
    _colorSetName = QUORSettingsTable::readText(reader, setRow("name"));
    _colors.resize(reader.beginReadArray(POINTS_ARRAY));
    for (int i = 0; i < _colors.size(); ++i) {
        reader.setArrayIndex(i);
        _colors[i] = readPoint(reader);
    }
    reader.endArray();
    reader.endGroup();
    _type = typeOf(_colors);
    QUORLog::Instance().logDebug(QStringLiteral("    color set ") + _colorSetName + QStringLiteral(" (") +
                                 QString::number(getNDefinedColors()) + QStringLiteral(" colors)"));
}

bool QUORColormap::isStep(int point) const {
    return _type == PiecewiseConstant || (_type == Mixed && _colors[point].constant);
}

double QUORColormap::nodeAt(int point) const {
    return _limits && isStep(point) ? _limits->firstRaw[point] : _scale[point];
}

vtkSmartPointer<vtkColorTransferFunction> QUORColormap::makeFunction(const QVector<double>& seams) const {
    auto function = vtkSmartPointer<vtkColorTransferFunction>::New();
    function->SetColorSpaceToRGB();
    for (int i = 0; i < std::min(getNDefinedColors(), int(seams.size())); ++i) {
        const Point& point = _colors[i];
        addNode(*function, seams[i],
                {point.lowerRed / 255.0, point.lowerGreen / 255.0, point.lowerBlue / 255.0}, isStep(i));
    }
    return function;
}

bool QUORColormap::construct() {
    _map = nullptr;
    if (_colors.isEmpty() || _scale.isEmpty()) {
        return false;
    }
    QVector<double> nodes = _scale;
    for (int i = 0; i < std::min(getNDefinedColors(), getNDefinedSeams()); ++i) {
        nodes[i] = nodeAt(i);
    }
    _map = makeFunction(nodes);
    if (_limits) {
        addMixtures();
        limitNodes();
    }
    return true;
}

void QUORColormap::addMixtures() {
    const vtkSmartPointer<vtkColorTransferFunction> display = makeFunction(_limits->displaySeams);
    for (const Mixture& mixture : _limits->mixtures) {
        if (mixture.point < getNDefinedColors() && !isStep(mixture.point)) {
            std::array<double, 3> color{};
            display->GetColor(mixture.display, color.data());
            addNode(*_map, mixture.raw, color, false);
        }
    }
}

void QUORColormap::findMixtures(const QUORDataType& dataType) {
    for (int i = 0; i + 1 < _scale.size(); ++i) {
        const double low = _scale[i];
        const double high = _scale[i + 1];
        const auto displayOf = [&](double raw) {
            return dataType.absoluteToDisplayValue(static_cast<unsigned int>(raw));
        };
        const double middle = std::floor(0.5 * (low + high));
        const double bend = displayOf(middle) - 0.5 * (displayOf(low) + displayOf(high));
        if (high - low < 2.0 * MIXTURES || std::abs(bend) < STRAIGHT * (displayOf(high) - displayOf(low))) {
            continue;
        }
        for (int k = 1; k < MIXTURES; ++k) {
            const double raw = std::floor(low + (high - low) * k / MIXTURES);
            const double display = displayOf(raw);
            if (display > _limits->lowestDisplay && display < _limits->highestDisplay) {
                _limits->mixtures.append({i, raw, display});
            }
        }
    }
}

void QUORColormap::limitNodes() {
    const vtkSmartPointer<vtkColorTransferFunction> display = makeFunction(_limits->displaySeams);
    const auto limit = [&](double end, unsigned int raw, auto isBeyond) {
        int last = -1;
        for (int i = 0; i < std::min(getNDefinedColors(), getNDefinedSeams()); ++i) {
            if (isBeyond(_limits->displaySeams[i], end)) {
                _map->RemovePoint(nodeAt(i));
                last = i;
            }
        }
        if (last >= 0) {
            std::array<double, 3> color{};
            display->GetColor(end, color.data());
            addNode(*_map, raw, color, isStep(last));
        }
    };
    limit(_limits->lowestDisplay, _limits->lowestRaw, std::less<>());
    limit(_limits->highestDisplay, _limits->highestRaw, std::greater<>());
}

void QUORColormap::changeValueRange(ValueRange range, const QUORDataType& dataType) {
    if (range == _valueRange || _scale.isEmpty()) {
        return;
    }
    _limits.reset();
    if (range == Absolute) {
        _limits = Limits{_scale,
                         {},
                         {},
                         dataType.getMinDisplayValue(),
                         dataType.getMaxDisplayValue(),
                         dataType.getMinAbsValue(),
                         dataType.getMaxAbsValue()};
    }
    for (double& seam : _scale) {
        if (range == Display) {
            constexpr double largest = std::numeric_limits<unsigned int>::max();
            seam = dataType.absoluteToDisplayValue(static_cast<unsigned int>(std::clamp(seam, 0.0, largest)));
        } else {
            const double display = seam;
            const unsigned int raw =
                std::max(dataType.displayToAbsoluteValue(seam), dataType.getMinAbsValue());
            seam = raw;
            _limits->firstRaw.append(dataType.absoluteToDisplayValue(raw) < display - ROUNDING ? raw + 1.0
                                                                                               : raw);
        }
    }
    _valueRange = range;
    if (range == Absolute) {
        findMixtures(dataType);
    }
}

void QUORColormap::setPiecewiseLinear() {
    _type = PiecewiseLinear;
    rewriteNodes(0.5, 0.0);
}

void QUORColormap::setPiecewiseConstant() {
    _type = PiecewiseConstant;
    rewriteNodes(STEP_MIDPOINT, 1.0);
}

void QUORColormap::rewriteNodes(double midpoint, double sharpness) {
    if (!_map) {
        return;
    }
    for (int i = 0; i < _map->GetSize(); ++i) {
        std::array<double, 6> node{};
        _map->GetNodeValue(i, node.data());
        node[4] = midpoint;
        node[5] = sharpness;
        _map->SetNodeValue(i, node.data());
    }
}

std::array<int, 3> QUORColormap::getColor(double value) const {
    if (!_map) {
        return {0, 0, 0};
    }
    std::array<double, 3> rgb{};
    _map->GetColor(value, rgb.data());
    return {int(rgb[0] * 255), int(rgb[1] * 255), int(rgb[2] * 255)};
}

QString QUORColormap::makeStamp() {
    return QUORSettingsReader::makeStamp(COLORS_FILE);
}

vtkSmartPointer<vtkScalarBarActor> QUORColormap::makeBar(const QString& title, double x, double y,
                                                         double width, double height) const {
    auto made = vtkSmartPointer<vtkScalarBarActor>::New();
    dressBar(*made, title, x, y, width, height);
    return made;
}

void QUORColormap::dressBar(vtkScalarBarActor& dressed, const QString& title, double x, double y,
                            double width, double height) const {
    vtkScalarBarActor* const bar = &dressed;
    vtkTextProperty* titleText = bar->GetTitleTextProperty();
    titleText->SetColor(0.0, 0.0, 0.0);
    titleText->SetFontSize(12);
    titleText->BoldOn();
    titleText->ItalicOff();
    titleText->ShadowOff();
    vtkTextProperty* labelText = bar->GetLabelTextProperty();
    labelText->BoldOff();
    labelText->ItalicOff();
    labelText->ShadowOff();
    labelText->SetColor(0.0, 0.0, 0.0);
    labelText->SetFontSize(8);
    labelText->SetFontFamilyToArial();
    bar->SetTitle(title.toUtf8().constData());
    bar->SetNumberOfLabels(getNSeamsInUse());
    bar->SetLabelFormat(_labelFormat.toUtf8().constData());
    bar->SetPosition(x, y);
    bar->SetWidth(width);
    bar->SetHeight(height);
    bar->SetLookupTable(_map);
    bar->SetMaximumNumberOfColors(getNRenderedColors());
}

vtkColorTransferFunction* QUORColormap::getMap() const {
    return _map;
}

int QUORColormap::getNColorsInUse() const {
    return std::min(getNDefinedColors(), getNDefinedSeams() - 1);
}

int QUORColormap::getNSeamsInUse() const {
    return getNColorsInUse() + 1;
}

int QUORColormap::getNRenderedColors() const {
    return _type == PiecewiseLinear ? LINEAR_COLORS : getNColorsInUse();
}

int QUORColormap::getColorGroupIdForDataType(int rawType) {
    QUORSettingsReader reader(COLORS_FILE);
    return readColorGroup(reader, rawType);
}

QString QUORColormap::getDataTypeLegendInfo(int rawType) {
    QUORSettingsReader reader(COLORS_FILE);
    return readMapping(reader, rawType, QString(), [](const QUORSettingsReader& entry) {
        return QUORSettingsTable::readText(entry, mappingRow("name"));
    });
}

QList<QUORColormap::ColorScaleListItem> QUORColormap::getScalesForDataType(int rawType) {
    QUORSettingsReader reader(COLORS_FILE);
    return readScales(reader, rawType);
}

QList<QUORColormap::ColorScaleListItem> QUORColormap::readScales(QUORSettingsReader& reader, int rawType) {
    const int colorGroup = readColorGroup(reader, rawType);
    QList<ColorScaleListItem> scales;
    const QStringList groups = reader.settings().childGroups();
    for (const QString& group : groups) {
        if (!group.startsWith(SCALE_GROUP)) {
            continue;
        }
        reader.beginGroup(group);
        if (QUORSettingsTable::readWhole(reader, scaleRow("data_index")) == colorGroup) {
            scales.append({group.mid(ID_POSITION, ID_LENGTH).toInt(),
                           QUORSettingsTable::readText(reader, scaleRow("name"))});
        }
        reader.endGroup();
    }
    return scales;
}

int QUORColormap::getColormapId(const QString& name, int rawType) {
    return findScale(getScalesForDataType(rawType), name, rawType);
}

int QUORColormap::findScale(const QList<ColorScaleListItem>& scales, const QString& name, int rawType) {
    const auto found = std::find_if(scales.cbegin(), scales.cend(),
                                    [&name](const ColorScaleListItem& item) { return item.name == name; });
    if (found != scales.cend()) {
        return found->id;
    }
    if (name != QLatin1String("Default")) {
        const QString subject = QStringLiteral("scale ") + name + QString::number(rawType);
        QUORLogOnce::logError(subject, QStringLiteral("There is no colour scale \"") + name +
                                           QStringLiteral("\" for data type ") + QString::number(rawType) +
                                           QStringLiteral(", scale 1 is used: ") +
                                           QUORSettingsReader::findUserFile(COLORS_FILE));
    }
    QUORLog::Instance().logWarning(QStringLiteral("COLORMAP NOT FOUND: mapname ") + name +
                                   QStringLiteral(", type ") + QString::number(rawType));
    return FALLBACK_SCALE;
}
