// SPDX-License-Identifier: MIT
#include "QUORLatLonGridElement.h"

#include "QUOR2DLayerActor.h"
#include "QUORFlatLabels.h"
#include "QUORGeoProjection.h"
#include "QUORLineActor.h"

#include <vtkActor.h>
#include <vtkCellArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace {

constexpr QUORElementTexts TEXTS{"QUORLatLonGridElement", "Creating new  visualization.", true, true};

constexpr int MINIMUM_DEGREES = 4;
constexpr int POLAR_LONGITUDE_STEP = 8;
/// The grid's range in half diagonals of the data.
constexpr double RANGE_IN_DIAGONALS = 1.5;
constexpr int MERCATOR_LIMIT = 85;
constexpr int SAMPLES_PER_STEP = 4;
/// Beyond any step between neighbouring samples: a line that leaves the map at one edge and comes back
/// at the other, metres.
constexpr double TORN_LINE = 2.0e6;

/// The area in whole degrees; the longitudes may pass 180.
struct Area {
    int minLat = 0;
    int maxLat = 0;
    int minLon = 0;
    int maxLon = 0;
    int lonStep = 1;
};

Area areaAround(const QUORGeoProjection& projection, double range) {
    Area area;
    const QUORCoordinate centre = projection.getReferenceLocation();
    centre.calcLatLonBounds(range, area.minLat, area.maxLat, area.minLon, area.maxLon, MINIMUM_DEGREES);
    if (area.minLat <= -90 || area.maxLat >= 90) {
        area.lonStep = POLAR_LONGITUDE_STEP;
    } else {
        area.lonStep = std::max(
            1, static_cast<int>(std::lround(centre.calcOneLatDegLength() / centre.calcOneLonDegLength())));
    }
    if (projection.getName() == QLatin1String("merc")) {
        area.minLat = std::max(area.minLat, -MERCATOR_LIMIT);
        area.maxLat = std::min(area.maxLat, MERCATOR_LIMIT);
    }
    return area;
}

std::vector<QUORCoordinate> parallel(const Area& area, int lat) {
    std::vector<QUORCoordinate> samples;
    const int count = (area.maxLon - area.minLon) * SAMPLES_PER_STEP / area.lonStep;
    for (int k = 0; k <= count; ++k) {
        samples.emplace_back(static_cast<double>(lat),
                             area.minLon + k * static_cast<double>(area.lonStep) / SAMPLES_PER_STEP);
    }
    return samples;
}

std::vector<QUORCoordinate> meridian(const Area& area, int lon) {
    std::vector<QUORCoordinate> samples;
    const int count = (area.maxLat - area.minLat) * SAMPLES_PER_STEP;
    for (int k = 0; k <= count; ++k) {
        samples.emplace_back(area.minLat + static_cast<double>(k) / SAMPLES_PER_STEP,
                             static_cast<double>(lon));
    }
    return samples;
}

/// Collects the lines and places the labels at their ends.
class GridBuilder {
public:
    /// `inner`: half the side of the square at whose edges the lines are labelled too; 0 for none.
    GridBuilder(const QUORGeoProjection& projection, const Area& area, QUORFlatLabels& labels, double scale,
                double inner)
        : _projection(projection), _area(area), _labels(labels), _scale(scale), _inner(inner) {
        _points->SetDataTypeToDouble();
    }

    void addParallels() {
        const bool touchesPole = _area.maxLat >= 90 || _area.minLat <= -90;
        for (int lat = _area.minLat; lat <= _area.maxLat; ++lat) {
            const auto [first, last] = addLine(parallel(_area, lat));
            _labels.setText(QUORLatLonGridElement::getLatitudeLabel(lat));
            QUORFlatLabels::Size size;
            if (!touchesPole) {
                size = _labels.measure();
                label(first, -1.4 * size.width, -0.25 * size.height);
            }
            label(last, 0.2 * size.width, -0.3 * size.height);
            labelInside(&QUORPoint3D::x, &QUORPoint3D::y, true);
        }
    }

    void addMeridians() {
        for (int lon = _area.minLon; lon <= _area.maxLon; lon += _area.lonStep) {
            const auto [first, last] = addLine(meridian(_area, lon));
            _labels.setText(QUORLatLonGridElement::getLongitudeLabel(lon));
            QUORFlatLabels::Size size;
            if (_area.minLat > -90) {
                size = _labels.measure();
                label(first, -0.5 * size.width, -1.4 * size.height);
            }
            if (_area.maxLat < 90) {
                label(last, -0.5 * size.width, 0.6 * size.height);
            }
            labelInside(&QUORPoint3D::y, &QUORPoint3D::x, false);
        }
    }

    vtkPoints* points() const { return _points; }
    vtkCellArray* lines() const { return _lines; }

private:
    struct Ends {
        QUORPoint3D first;
        QUORPoint3D last;
    };

    Ends addLine(const std::vector<QUORCoordinate>& samples) {
        std::vector<QUORPoint3D> projected(samples.size());
        _projection.projectFromLatLon(samples, projected);
        _line = projected;
        for (std::size_t i = 0; i < projected.size(); ++i) {
            const vtkIdType id = _points->InsertNextPoint(projected[i].x, projected[i].y, projected[i].z);
            if (i > 0 && distance(projected[i - 1], projected[i]) < TORN_LINE) {
                _lines->InsertNextCell({id - 1, id});
            }
        }
        return {projected.front(), projected.back()};
    }

    static double distance(const QUORPoint3D& a, const QUORPoint3D& b) {
        return std::hypot(a.x - b.x, a.y - b.y);
    }

    void label(const QUORPoint3D& end, double dx, double dy) {
        _labels.addAt(end.x + dx * _scale, end.y + dy * _scale);
    }

    /// Where the line last added crosses the edges of the inner square, just outside it.
    void labelInside(double QUORPoint3D::*along, double QUORPoint3D::*across, bool isParallel) {
        const QUORFlatLabels::Size size = _labels.measure();
        for (const double edge : {-_inner, _inner}) {
            for (std::size_t i = 1; _inner > 0.0 && i < _line.size(); ++i) {
                const QUORPoint3D& a = _line[i - 1];
                const QUORPoint3D& b = _line[i];
                if ((a.*along < edge) == (b.*along < edge) || distance(a, b) >= TORN_LINE) {
                    continue;
                }
                const double part = (edge - a.*along) / (b.*along - a.*along);
                QUORPoint3D place;
                place.*along = edge;
                place.*across = a.*across + part * (b.*across - a.*across);
                if (std::abs(place.*across) < _inner) {
                    const bool low = edge < 0.0;
                    label(place, isParallel ? (low ? -1.2 : 0.2) * size.width : 0.15 * size.width,
                          isParallel ? 0.2 * size.height : (low ? -1.3 : 0.3) * size.height);
                }
            }
        }
    }

    const QUORGeoProjection& _projection;
    const Area& _area;
    QUORFlatLabels& _labels;
    double _scale;
    double _inner;
    std::vector<QUORPoint3D> _line;
    vtkNew<vtkPoints> _points;
    vtkNew<vtkCellArray> _lines;
};

} // namespace

QUORLatLonGridElement::QUORLatLonGridElement(QUORVisualGroup* group, int key)
    : QUORStyledElement(group, key, TEXTS, "LATLONGRID") {}

QString QUORLatLonGridElement::getLatitudeLabel(double lat) {
    QString number = QString::number(std::abs(lat), 'g', 6);
    if (lat == 0.0) {
        return number;
    }
    return number + QLatin1Char(lat > 0.0 ? 'N' : 'S');
}

QString QUORLatLonGridElement::getLongitudeLabel(double lon) {
    if (lon <= -180.0) {
        lon += 360.0;
    } else if (lon > 180.0) {
        lon -= 360.0;
    }
    QString number = QString::number(std::abs(lon), 'g', 6);
    if (lon == 0.0 || std::abs(lon) >= 180.0) {
        return number;
    }
    return number + QLatin1Char(lon > 0.0 ? 'E' : 'W');
}

vtkSmartPointer<vtkProp> QUORLatLonGridElement::makeProp() const {
    const QUORGeoProjection::CPtr projection = _params->getGeoProjection();
    if (!projection || !projection->isReady() || !(_params->getRange() >= 0.0)) {
        return {};
    }
    const Area area = areaAround(*projection, _params->getRange());
    if (area.minLat > area.maxLat) {
        return {};
    }

    auto layer = vtkSmartPointer<QUOR2DLayerActor>::New();
    const double scale = style().number("label/size");
    QUORFlatLabels labels(*layer, style(), scale);
    // Of square data, whose half diagonal the range is made of.
    const double side = _params->getRange() / RANGE_IN_DIAGONALS / std::numbers::sqrt2;
    GridBuilder grid(*projection, area, labels, scale, style().number("label/inner") > 0.5 ? side : 0.0);
    grid.addParallels();
    grid.addMeridians();
    layer->AddPart(quorMakeLineActor(grid.points(), grid.lines(), style().color("line/color"),
                                     style().number("line/width")));
    return layer;
}
