// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <string>
#include <vector>

/// Writes a netCDF-4 file, which is an HDF5 file too, piece by piece; throws when the library refuses.
/// Groups are paths such as "dataset1/what", made where they are not there.
class NetcdfMaker {
public:
    /// `classic` makes a file of the old kind, without groups.
    explicit NetcdfMaker(const QString& path, bool classic = false);
    ~NetcdfMaker();
    NetcdfMaker(const NetcdfMaker&) = delete;
    NetcdfMaker& operator=(const NetcdfMaker&) = delete;

    NetcdfMaker& text(const std::string& group, const char* name, const std::string& value);
    NetcdfMaker& number(const std::string& group, const char* name, double value);
    NetcdfMaker& numbers(const std::string& group, const char* name, const std::vector<double>& values);
    /// Dimensions in the root, by name; their lengths may not change.
    struct Dimension {
        std::string name;
        std::size_t length;
    };
    using Dimensions = std::vector<Dimension>;
    NetcdfMaker& bytes(const std::string& group, const char* name, const Dimensions& dimensions,
                       const std::vector<unsigned char>& values);
    NetcdfMaker& doubles(const std::string& group, const char* name, const Dimensions& dimensions,
                         const std::vector<double>& values);
    NetcdfMaker& shorts(const std::string& group, const char* name, const Dimensions& dimensions,
                        const std::vector<short>& values);
    NetcdfMaker& characters(const std::string& group, const char* name, const Dimensions& dimensions,
                            const std::string& values);
    /// A variable of the root that is there already.
    NetcdfMaker& variable(const char* name);
    /// An attribute of the variable made, or named, last.
    NetcdfMaker& of(const char* name, double value);
    NetcdfMaker& of(const char* name, const char* value);
    NetcdfMaker& ofShort(const char* name, short value);

private:
    int group(const std::string& path);
    void flush();
    void define(const std::string& group, const char* name, int type, const Dimensions& dimensions);

    int _id = -1;
    int _group = -1;
    int _variable = -1;
    std::function<int()> _write;
};
