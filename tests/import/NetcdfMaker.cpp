// SPDX-License-Identifier: MIT
#include "NetcdfMaker.h"

#include <gtest/gtest.h>

#include <netcdf.h>

#include <QFile>
#include <QStringList>

namespace {

void check(int status) {
    EXPECT_EQ(status, NC_NOERR) << nc_strerror(status);
}

} // namespace

NetcdfMaker::NetcdfMaker(const QString& path) {
    check(nc_create(QFile::encodeName(path).constData(), NC_NETCDF4 | NC_CLOBBER, &_id));
}

NetcdfMaker::~NetcdfMaker() {
    check(nc_close(_id));
}

int NetcdfMaker::group(const std::string& path) {
    int id = _id;
    for (const QString& name : QString::fromStdString(path).split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        int child = 0;
        if (nc_inq_grp_ncid(id, name.toUtf8().constData(), &child) != NC_NOERR) {
            check(nc_def_grp(id, name.toUtf8().constData(), &child));
        }
        id = child;
    }
    return id;
}

NetcdfMaker& NetcdfMaker::text(const std::string& path, const char* name, const std::string& value) {
    check(nc_put_att_text(group(path), NC_GLOBAL, name, value.size(), value.data()));
    return *this;
}

NetcdfMaker& NetcdfMaker::number(const std::string& path, const char* name, double value) {
    return numbers(path, name, {value});
}

NetcdfMaker& NetcdfMaker::numbers(const std::string& path, const char* name,
                                  const std::vector<double>& values) {
    check(nc_put_att_double(group(path), NC_GLOBAL, name, NC_DOUBLE, values.size(), values.data()));
    return *this;
}

int NetcdfMaker::define(const std::string& path, const char* name, int type, const Dimensions& dimensions) {
    std::vector<int> ids;
    for (const Dimension& dimension : dimensions) {
        int id = 0;
        if (nc_inq_dimid(_id, dimension.name.c_str(), &id) != NC_NOERR) {
            check(nc_def_dim(_id, dimension.name.c_str(), dimension.length, &id));
        }
        ids.push_back(id);
    }
    _group = group(path);
    check(nc_def_var(_group, name, type, int(ids.size()), ids.data(), &_variable));
    return _group;
}

NetcdfMaker& NetcdfMaker::bytes(const std::string& path, const char* name, const Dimensions& dimensions,
                                const std::vector<unsigned char>& values) {
    check(nc_put_var_uchar(define(path, name, NC_UBYTE, dimensions), _variable, values.data()));
    return *this;
}

NetcdfMaker& NetcdfMaker::doubles(const std::string& path, const char* name, const Dimensions& dimensions,
                                  const std::vector<double>& values) {
    check(nc_put_var_double(define(path, name, NC_DOUBLE, dimensions), _variable, values.data()));
    return *this;
}

NetcdfMaker& NetcdfMaker::shorts(const std::string& path, const char* name, const Dimensions& dimensions,
                                 const std::vector<short>& values) {
    check(nc_put_var_short(define(path, name, NC_SHORT, dimensions), _variable, values.data()));
    return *this;
}

NetcdfMaker& NetcdfMaker::characters(const std::string& path, const char* name, const Dimensions& dimensions,
                                     const std::string& values) {
    check(nc_put_var_text(define(path, name, NC_CHAR, dimensions), _variable, values.data()));
    return *this;
}

NetcdfMaker& NetcdfMaker::of(const char* name, double value) {
    // The fill value has the type of its variable.
    nc_type type = NC_DOUBLE;
    if (std::string(name) == "_FillValue" || std::string(name) == "_Undetect") {
        check(nc_inq_vartype(_group, _variable, &type));
    }
    check(nc_put_att_double(_group, _variable, name, type, 1, &value));
    return *this;
}

NetcdfMaker& NetcdfMaker::of(const char* name, const char* value) {
    check(nc_put_att_text(_group, _variable, name, std::string(value).size(), value));
    return *this;
}
