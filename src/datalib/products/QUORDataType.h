// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <span>

/// The quantity of a product's data, with the conversions between stored integers ("absolute" values)
/// and physical ("display") values. A small value; the scaling of one-byte velocity and width depends on
/// the scan, so two data types of the same quantity may differ.
class QUORDataType {
public:
    /// One quantity in one stored form.
    struct Row {
        int code; ///< data type code of the product header, -1 for the row of all unknown codes
        const char* name;
        const char* unit;
        const char* configuration; ///< name of the configuration that products of this quantity form
        unsigned int minimum;      ///< absolute range; the value below the minimum means no data
        unsigned int maximum;
        double (*toDisplay)(unsigned int absolute, double factor);
        unsigned int (*toAbsolute)(double display, double factor);
    };
    /// Every known form; the first row stands for all unknown codes.
    static std::span<const Row> getRows();

    explicit QUORDataType(int code);
    /// `prf` in hertz, `wavelength` in hundredths of a centimetre.
    QUORDataType(int code, int prf, int prfMode, int wavelength, int pulseCode);
    void computeNyquistFactor(int prf, int prfMode, int wavelength, int pulseCode);

    /// Translated.
    QString getQuantityName() const;
    QString getQuantityUnit() const;
    /// "Z", "V", "W" or "R"; a null string for unknown codes.
    QString getConfiguration() const;

    double absoluteToDisplayValue(unsigned int value) const;
    /// Within the display range the nearest absolute value. Beyond it velocities are cut to their limits
    /// and rainfall rates to the largest one; what would be negative, or is not a number, becomes 0.
    unsigned int displayToAbsoluteValue(double value) const;

    unsigned int getMinAbsValue() const { return row().minimum; }
    unsigned int getMaxAbsValue() const { return row().maximum; }
    unsigned int getNoDataValue() const { return row().minimum - 1; }
    /// What no data counts as where surfaces are built: no wind of a velocity, else the no-data value. A
    /// velocity below every other would make the shell of each inbound wind wrap all echo.
    unsigned int getSurfaceNoDataValue() const;
    double getMinDisplayValue() const { return absoluteToDisplayValue(getMinAbsValue()); }
    double getMaxDisplayValue() const { return absoluteToDisplayValue(getMaxAbsValue()); }
    /// The display value of an absolute one with one decimal, or "NA" for the no-data value.
    QString getDisplayStr(int value) const;

    /// The data type code, -1 when unknown.
    int getRawType() const { return row().code; }
    /// Bytes of one element in this form: 1 or 2; 0 when unknown.
    int getItemSize() const;

    bool operator==(const QUORDataType&) const = default;

private:
    const Row& row() const;

    int _index = 0;
    double _nyquistFactor = 1.0;
};
