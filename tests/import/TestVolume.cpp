// SPDX-License-Identifier: MIT
#include "TestVolume.h"

TestVolume::TestVolume() {
    format = QStringLiteral("test");
    site = {QStringLiteral("Test"), 50.0, 10.0, 400.0, 20.0};
    time = QDateTime(QDate(2024, 6, 1), QTime(12, 30, 5), Qt::UTC);
    wavelength = 0.0533;
    beamWidth = 1.0;
}

QUORRadarSweep& TestVolume::addSweep(double elevation, double nyquist, double shift) {
    QUORRadarSweep& sweep = sweeps.emplace_back();
    sweep.fixedAngle = elevation;
    sweep.time = time;
    sweep.nyquist = nyquist;
    for (int ray = 0; ray < 360; ++ray) {
        sweep.azimuths.push_back(float(ray + shift));
        sweep.elevations.push_back(float(elevation));
    }
    return sweep;
}

void TestVolume::addMoment(QUORRadarSweep& sweep, QUORRadarQuantity quantity, const Field& field,
                           Gates gates) {
    std::vector<float> values;
    for (const float azimuth : sweep.azimuths) {
        for (int gate = 0; gate < gates.count; ++gate) {
            values.push_back(field(double(azimuth), gates.first + gate * gates.spacing));
        }
    }
    QUORRadarMoment moment;
    moment.quantity = quantity;
    moment.name = QStringLiteral("FIELD");
    moment.gates = gates.count;
    moment.firstGate = gates.first;
    moment.gateSpacing = gates.spacing;
    moment.pack(values, 0.5);
    sweep.moments.push_back(std::move(moment));
}
