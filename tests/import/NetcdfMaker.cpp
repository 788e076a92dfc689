// SPDX-License-Identifier: MIT
#include "NetcdfMaker.h"

#include <netcdf.h>

#include <QFile>
#include <QStringList>

#include <stdexcept>
#include <utility>

namespace {

void check(int status) {
    if (status != NC_NOERR) {
        throw std::runtime_error(nc_strerror(status));
    }
}

} // namespace

NetcdfMaker::NetcdfMaker(const QString& path, bool classic) {
    check(nc_create(QFile::encodeName(path).constData(), (classic ? 0 : NC_NETCDF4) | NC_CLOBBER, &_id));
}

/// Values follow the attributes of their variable: the fill value has to come first.
void NetcdfMaker::flush() {
    if (_write) {
        nc_enddef(_id); // a classic file is either described or written; the other kind does not mind
        check(std::exchange(_write, nullptr)());
        nc_redef(_id);
    }
}

NetcdfMaker::~NetcdfMaker() {
    try {
        flush();
    } catch (const std::runtime_error&) {
        nc_close(_id);
        return;
    }
    nc_close(_id);
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
    flush();
    check(nc_put_att_text(group(path), NC_GLOBAL, name, value.size(), value.data()));
    return *this;
}

NetcdfMaker& NetcdfMaker::number(const std::string& path, const char* name, double value) {
    return numbers(path, name, {value});
}

NetcdfMaker& NetcdfMaker::numbers(const std::string& path, const char* name,
                                  const std::vector<double>& values) {
    flush();
    check(nc_put_att_double(group(path), NC_GLOBAL, name, NC_DOUBLE, values.size(), values.data()));
    return *this;
}

void NetcdfMaker::define(const std::string& path, const char* name, int type, const Dimensions& dimensions) {
    flush();
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
}

NetcdfMaker& NetcdfMaker::bytes(const std::string& path, const char* name, const Dimensions& dimensions,
                                const std::vector<unsigned char>& values) {
    define(path, name, NC_UBYTE, dimensions);
    _write = [this, values] { return nc_put_var_uchar(_group, _variable, values.data()); };
    return *this;
}

NetcdfMaker& NetcdfMaker::doubles(const std::string& path, const char* name, const Dimensions& dimensions,
                                  const std::vector<double>& values) {
    define(path, name, NC_DOUBLE, dimensions);
    _write = [this, values] { return nc_put_var_double(_group, _variable, values.data()); };
    return *this;
}

NetcdfMaker& NetcdfMaker::shorts(const std::string& path, const char* name, const Dimensions& dimensions,
                                 const std::vector<short>& values) {
    define(path, name, NC_SHORT, dimensions);
    _write = [this, values] { return nc_put_var_short(_group, _variable, values.data()); };
    return *this;
}

NetcdfMaker& NetcdfMaker::characters(const std::string& path, const char* name, const Dimensions& dimensions,
                                     const std::string& values) {
    define(path, name, NC_CHAR, dimensions);
    _write = [this, values] { return nc_put_var_text(_group, _variable, values.data()); };
    return *this;
}

NetcdfMaker& NetcdfMaker::variable(const char* name) {
    flush();
    _group = _id;
    check(nc_inq_varid(_id, name, &_variable));
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

NetcdfMaker& NetcdfMaker::ofShort(const char* name, short value) {
    check(nc_put_att_short(_group, _variable, name, NC_SHORT, 1, &value));
    return *this;
}
