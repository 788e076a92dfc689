// SPDX-License-Identifier: MIT
#include "QUORMapPlane.h"

#include "QUORImportError.h"

#include <proj.h>

#include <cmath>

struct QUORMapPlane::Handles {
    PJ_CONTEXT* context = proj_context_create();
    PJ* projection = nullptr;
    ~Handles() {
        proj_destroy(projection);
        proj_context_destroy(context);
    }
};

namespace {

double orNothing(double value) {
    return std::abs(value) < 1e30 ? value : std::nan("");
}

} // namespace

QUORMapPlane::QUORMapPlane(const QString& description)
    : _handles(std::make_unique<Handles>()), _isDegrees(description.contains(QLatin1String("longlat"))) {
    proj_log_level(_handles->context, PJ_LOG_NONE);
    if (!_isDegrees) {
        _handles->projection = proj_create(_handles->context, description.toUtf8().constData());
        if (_handles->projection == nullptr) {
            throw QUORImportError(QStringLiteral("a map projection that cannot be used: ") + description);
        }
    }
}

QUORMapPlane::~QUORMapPlane() = default;

std::pair<double, double> QUORMapPlane::project(double latitude, double longitude) const {
    if (_isDegrees) {
        return {longitude, latitude};
    }
    const PJ_COORD place = proj_coord(proj_torad(longitude), proj_torad(latitude), 0.0, 0.0);
    const PJ_COORD point = proj_trans(_handles->projection, PJ_FWD, place);
    return {orNothing(point.xy.x), orNothing(point.xy.y)};
}

std::pair<double, double> QUORMapPlane::unproject(double x, double y) const {
    if (_isDegrees) {
        return {y, x};
    }
    const PJ_COORD place = proj_trans(_handles->projection, PJ_INV, proj_coord(x, y, 0.0, 0.0));
    return {orNothing(proj_todeg(place.lp.phi)), orNothing(proj_todeg(place.lp.lam))};
}
