// SPDX-License-Identifier: MIT
#pragma once

#include "QUORRadarData.h"

#include <functional>

/// A polar volume to be: a radar at 50 N 10 E, 400 m over the sea, without sweeps.
struct TestVolume : QUORRadarData {
    TestVolume();

    /// Gives the value of a gate from the azimuth of its ray (degrees) and its distance (metres).
    using Field = std::function<float(double azimuth, double range)>;
    struct Gates {
        int count = 200;
        double first = 250.0;
        double spacing = 500.0;
    };

    /// A sweep of 360 rays of one degree; `shift` moves their azimuths.
    QUORRadarSweep& addSweep(double elevation, double nyquist = 20.0, double shift = 0.5);
    static void addMoment(QUORRadarSweep& sweep, QUORRadarQuantity quantity, const Field& field, Gates gates);
    static void addMoment(QUORRadarSweep& sweep, QUORRadarQuantity quantity, const Field& field) {
        addMoment(sweep, quantity, field, Gates());
    }
};
