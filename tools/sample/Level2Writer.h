// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QDateTime>

#include <functional>
#include <vector>

/// Writes a volume in the NEXRAD Level II archive format with rays as message 31. It shares no code with the
/// reader: each checks the other. Nothing is checked, so that tests can write what no radar would.
class Level2Writer {
public:
    struct Moment {
        QByteArray name; ///< three characters: "REF", "VEL", "SW "
        int gates = 0;
        int firstGate = 0;   ///< metres
        int gateSpacing = 0; ///< metres
        int bits = 8;
        float scale = 2.0F;
        float offset = 66.0F;
        /// The stored number of a gate.
        std::function<unsigned int(int gate)> code;
    };
    struct Ray {
        float azimuth = 0.0F;
        float elevation = 0.0F;
        int elevationNumber = 1;
        int status = 1; ///< 0 and 2 begin and end an elevation, 3 and 4 a volume
        double nyquist = 0.0;
        double unambiguousRange = 0.0; ///< metres
        std::vector<Moment> moments;
    };

    Level2Writer(QByteArray site, const QDateTime& time, float latitude, float longitude, int ground,
                 int antenna);

    void add(const Ray& ray);
    /// Records of 120 rays each, packed or as they are.
    QByteArray toBytes(bool packed = true) const;

private:
    QByteArray header() const;

    QByteArray _site;
    QDateTime _time;
    QByteArray _place;
    std::vector<QByteArray> _messages;
};
