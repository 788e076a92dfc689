// SPDX-License-Identifier: MIT
#pragma once

#include "ProductWriter.h"
#include "StormModel.h"

#include <QString>

#include <functional>

/// The products that radar software would make of one time step of the storm: CAPPI of reflectivity,
/// velocity, width and rain rate in both item sizes, and the flat products of the same time.
class StormProducts {
public:
    /// Takes a finished product and the folder that it belongs to: "3d", "3d_2byte" (the two-byte forms of
    /// what "3d" holds in one byte) or "2d". False stops.
    using Taker = std::function<bool(const QString& folder, const SampleProduct& product)>;

    /// `frame` gives site, time, grid and measurement; its code, type and values are not used.
    StormProducts(SampleProduct frame, const StormModel& model);

    /// The step at so many seconds after the frame's time. False when the taker stopped it.
    bool make(int seconds, const Taker& take) const;

private:
    struct Fields;

    Fields sampleVolume(int seconds) const;
    std::vector<float> sampleSweep(int seconds) const;
    SampleProduct product(int seconds, std::uint16_t code, std::uint16_t type,
                          const std::vector<float>& values) const;
    bool makeVolumes(int seconds, const Fields& fields, const Taker& take) const;
    bool makeFlat(int seconds, const Fields& fields, const Taker& take) const;
    double metres(int axis, int index) const;

    SampleProduct _frame;
    StormModel _model;
};
