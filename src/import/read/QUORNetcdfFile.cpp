// SPDX-License-Identifier: MIT
#include "QUORNetcdfFile.h"

#include "QUORImportError.h"
#include "QUORRadarChecks.h"
#include "QUORRadarData.h"

#include <netcdf.h>
#include <netcdf_mem.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr std::size_t LONGEST_TEXT = 65536;

void check(int status, const QString& what) {
    if (status != NC_NOERR) {
        throw QUORImportError(what + QStringLiteral(": ") + QString::fromUtf8(nc_strerror(status)));
    }
}

/// Texts may be padded with blanks or zeros.
QString cleaned(const QByteArray& bytes) {
    return QString::fromUtf8(bytes.constData(), qsizetype(qstrnlen(bytes.constData(), size_t(bytes.size()))))
        .trimmed();
}

bool isNumericType(nc_type type) {
    return type >= NC_BYTE && type <= NC_UINT64 && type != NC_CHAR;
}

} // namespace

std::vector<double> QUORNetcdfAttributes::numbers(const char* name) const {
    nc_type type = NC_NAT;
    std::size_t length = 0;
    if (nc_inq_att(_id, _variable, name, &type, &length) != NC_NOERR || !isNumericType(type) || length == 0 ||
        length > 1000000) {
        return {};
    }
    std::vector<double> values(length);
    return nc_get_att_double(_id, _variable, name, values.data()) == NC_NOERR ? values
                                                                              : std::vector<double>();
}

std::optional<double> QUORNetcdfAttributes::number(const char* name) const {
    if (const std::vector<double> values = numbers(name); !values.empty()) {
        return values.front();
    }
    bool good = false;
    const double value = text(name).toDouble(&good);
    return good ? std::optional(value) : std::nullopt;
}

bool QUORNetcdfAttributes::isFloating(const char* name) const {
    nc_type type = NC_NAT;
    return nc_inq_atttype(_id, _variable, name, &type) == NC_NOERR && (type == NC_FLOAT || type == NC_DOUBLE);
}

QString QUORNetcdfAttributes::text(const char* name) const {
    nc_type type = NC_NAT;
    std::size_t length = 0;
    if (nc_inq_att(_id, _variable, name, &type, &length) != NC_NOERR || length == 0 ||
        length > LONGEST_TEXT) {
        return {};
    }
    if (type == NC_CHAR) {
        QByteArray bytes(qsizetype(length), '\0');
        return nc_get_att_text(_id, _variable, name, bytes.data()) == NC_NOERR ? cleaned(bytes) : QString();
    }
    if (type == NC_STRING) {
        std::vector<char*> strings(length, nullptr);
        if (nc_get_att_string(_id, _variable, name, strings.data()) != NC_NOERR) {
            return {};
        }
        const QString first = cleaned(QByteArray(strings.front()));
        nc_free_string(length, strings.data());
        return first;
    }
    return {};
}

QString QUORNetcdfVariable::getName() const {
    std::array<char, NC_MAX_NAME + 1> name{};
    return nc_inq_varname(_id, _variable, name.data()) == NC_NOERR ? QString::fromUtf8(name.data())
                                                                   : QString();
}

QStringList QUORNetcdfVariable::getDimensions() const {
    int count = 0;
    check(nc_inq_varndims(_id, _variable, &count), getName());
    std::vector<int> dimensions(static_cast<std::size_t>(count));
    check(nc_inq_vardimid(_id, _variable, dimensions.data()), getName());
    QStringList names;
    for (const int dimension : dimensions) {
        std::array<char, NC_MAX_NAME + 1> name{};
        check(nc_inq_dimname(_id, dimension, name.data()), getName());
        names.append(QString::fromUtf8(name.data()));
    }
    return names;
}

std::vector<std::size_t> QUORNetcdfVariable::getShape() const {
    int count = 0;
    check(nc_inq_varndims(_id, _variable, &count), getName());
    std::vector<int> dimensions(static_cast<std::size_t>(count));
    check(nc_inq_vardimid(_id, _variable, dimensions.data()), getName());
    std::vector<std::size_t> shape(dimensions.size());
    for (std::size_t i = 0; i < shape.size(); ++i) {
        check(nc_inq_dimlen(_id, dimensions[i], &shape[i]), getName());
    }
    return shape;
}

bool QUORNetcdfVariable::isNumeric() const {
    nc_type type = NC_NAT;
    return nc_inq_vartype(_id, _variable, &type) == NC_NOERR && isNumericType(type);
}

bool QUORNetcdfVariable::isText() const {
    nc_type type = NC_NAT;
    return nc_inq_vartype(_id, _variable, &type) == NC_NOERR && (type == NC_CHAR || type == NC_STRING);
}

std::size_t QUORNetcdfVariable::countOf() const {
    double count = 1.0;
    for (const std::size_t length : getShape()) {
        count *= double(length);
    }
    if (count > QUORRadarChecks::MOST_VALUES) {
        throw QUORImportError(getName() + QStringLiteral(": it says that it holds %1 values").arg(count));
    }
    return std::size_t(count);
}

std::vector<float> QUORNetcdfVariable::readRaw() const {
    if (!isNumeric()) {
        throw QUORImportError(getName() + QStringLiteral(": not numbers"));
    }
    std::vector<float> values(countOf());
    if (!values.empty()) {
        const int status = nc_get_var_float(_id, _variable, values.data());
        check(status == NC_ERANGE ? NC_NOERR : status, getName());
    }
    return values;
}

std::vector<double> QUORNetcdfVariable::readDoubles() const {
    if (!isNumeric()) {
        throw QUORImportError(getName() + QStringLiteral(": not numbers"));
    }
    std::vector<double> values(countOf());
    if (!values.empty()) {
        check(nc_get_var_double(_id, _variable, values.data()), getName());
    }
    const double scale = number("scale_factor").value_or(1.0);
    const double offset = number("add_offset").value_or(0.0);
    const std::optional<double> fill = number("_FillValue");
    for (double& value : values) {
        value = fill && value == *fill ? std::nan("") : value * scale + offset;
    }
    return values;
}

QStringList QUORNetcdfVariable::readTexts() const {
    nc_type type = NC_NAT;
    check(nc_inq_vartype(_id, _variable, &type), getName());
    const std::size_t count = countOf();
    QStringList texts;
    if (count == 0 || count > LONGEST_TEXT) {
        return texts;
    }
    if (type == NC_STRING) {
        std::vector<char*> strings(count, nullptr);
        check(nc_get_var_string(_id, _variable, strings.data()), getName());
        for (const char* string : strings) {
            texts.append(cleaned(QByteArray(string)));
        }
        nc_free_string(count, strings.data());
    } else if (type == NC_CHAR) {
        QByteArray bytes(qsizetype(count), '\0');
        check(nc_get_var_text(_id, _variable, bytes.data()), getName());
        const std::vector<std::size_t> shape = getShape();
        const auto width = qsizetype(shape.empty() ? 1 : shape.back());
        for (qsizetype start = 0; start < bytes.size(); start += width) {
            texts.append(cleaned(bytes.mid(start, width)));
        }
    }
    return texts;
}

double QUORNetcdfVariable::getStep() const {
    nc_type type = NC_NAT;
    if (nc_inq_vartype(_id, _variable, &type) != NC_NOERR || type == NC_FLOAT || type == NC_DOUBLE) {
        return 0.0;
    }
    return std::abs(number("scale_factor").value_or(1.0));
}

std::vector<float> QUORNetcdfVariable::readValues() const {
    std::vector<float> values = readRaw();
    nc_type type = NC_NAT;
    check(nc_inq_vartype(_id, _variable, &type), getName());
    const bool wraps = text("_Unsigned") == QLatin1String("true") && (type == NC_BYTE || type == NC_SHORT);
    const float turn = type == NC_BYTE ? 256.0F : 65536.0F;
    const auto asRead = [&](double marker) {
        return wraps && marker < 0.0 ? float(marker) + turn : float(marker);
    };
    std::vector<float> missing;
    for (const char* name : {"_FillValue", "missing_value"}) {
        for (const double marker : numbers(name)) {
            missing.push_back(asRead(marker));
        }
    }
    const std::optional<double> undetect = number("_Undetect");
    const float scale = float(number("scale_factor").value_or(1.0));
    const float offset = float(number("add_offset").value_or(0.0));
    std::vector<double> range = numbers("valid_range");
    if (range.size() != 2) {
        const double lowest = number("valid_min").value_or(-HUGE_VAL);
        range = {lowest, number("valid_max").value_or(HUGE_VAL)};
    }
    // By the convention limits of a wider type than the packed values' are limits of the unpacked ones.
    const bool isOfUnpacked =
        getStep() > 0.0 && (isFloating("valid_range") || isFloating("valid_min") || isFloating("valid_max"));
    const float lowest = isOfUnpacked ? float(range[0]) : asRead(range[0]);
    const float highest = isOfUnpacked ? float(range[1]) : asRead(range[1]);
    const auto isInvalid = [&](float value) {
        const float compared = isOfUnpacked ? value * scale + offset : value;
        return lowest < highest && (compared < lowest || compared > highest);
    };
    for (float& value : values) {
        if (wraps && value < 0.0F) {
            value += turn;
        }
        if (undetect && value == asRead(*undetect)) {
            value = QUORRadarValue::NO_ECHO;
        } else if (!std::isfinite(value) ||
                   std::find(missing.begin(), missing.end(), value) != missing.end() || isInvalid(value) ||
                   std::abs(value) > 9e36F) {
            value = QUORRadarValue::NO_DATA;
        } else {
            value = value * scale + offset;
        }
    }
    return values;
}

QUORNetcdfGroup::QUORNetcdfGroup(int id) : QUORNetcdfAttributes(id, NC_GLOBAL) {}

QString QUORNetcdfGroup::getName() const {
    std::array<char, NC_MAX_NAME + 1> name{};
    return nc_inq_grpname(_id, name.data()) == NC_NOERR ? QString::fromUtf8(name.data()) : QString();
}

std::vector<QUORNetcdfGroup> QUORNetcdfGroup::getGroups() const {
    int count = 0;
    if (nc_inq_grps(_id, &count, nullptr) != NC_NOERR || count <= 0) {
        return {};
    }
    std::vector<int> ids(static_cast<std::size_t>(count));
    check(nc_inq_grps(_id, &count, ids.data()), getName());
    return {ids.begin(), ids.end()};
}

std::optional<QUORNetcdfGroup> QUORNetcdfGroup::findGroup(const QString& name) const {
    int id = 0;
    if (name.isEmpty() || nc_inq_grp_ncid(_id, name.toUtf8().constData(), &id) != NC_NOERR) {
        return {};
    }
    return QUORNetcdfGroup(id);
}

std::vector<QUORNetcdfVariable> QUORNetcdfGroup::getVariables() const {
    int count = 0;
    if (nc_inq_nvars(_id, &count) != NC_NOERR) {
        return {};
    }
    std::vector<QUORNetcdfVariable> variables;
    for (int i = 0; i < count; ++i) {
        variables.emplace_back(_id, i);
    }
    return variables;
}

std::optional<QUORNetcdfVariable> QUORNetcdfGroup::findVariable(const char* name) const {
    int variable = 0;
    if (nc_inq_varid(_id, name, &variable) != NC_NOERR) {
        return {};
    }
    return QUORNetcdfVariable(_id, variable);
}

std::optional<double> QUORNetcdfGroup::findNumber(const char* variable) const {
    const auto found = findVariable(variable);
    if (!found || !found->isNumeric()) {
        return {};
    }
    for (const double value : found->readDoubles()) {
        if (std::isfinite(value)) {
            return value;
        }
    }
    return {};
}

QString QUORNetcdfGroup::findText(const char* variable) const {
    const auto found = findVariable(variable);
    return found && found->isText() ? found->readTexts().value(0) : QString();
}

QUORNetcdfFile::QUORNetcdfFile(int descriptor) {
    const QByteArray path = QByteArray("/proc/self/fd/") + QByteArray::number(descriptor);
    check(nc_open(path.constData(), NC_NOWRITE, &_id), QStringLiteral("damaged or cut off"));
}

QUORNetcdfFile::QUORNetcdfFile(const QByteArray& content) {
    check(nc_open_mem("content", NC_NOWRITE, size_t(content.size()), const_cast<char*>(content.constData()),
                      &_id),
          QStringLiteral("damaged or cut off"));
}

QUORNetcdfFile::~QUORNetcdfFile() {
    if (_id >= 0) {
        nc_close(_id);
    }
}
