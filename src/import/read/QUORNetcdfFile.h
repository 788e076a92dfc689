// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

/// Attributes of a group or a variable. What is absent or of another kind is nothing.
class QUORNetcdfAttributes {
public:
    /// The first value of a numeric attribute, also a number written as text.
    std::optional<double> number(const char* name) const;
    std::vector<double> numbers(const char* name) const;
    /// Whether it is there and of a floating-point type.
    bool isFloating(const char* name) const;
    /// Empty when absent.
    QString text(const char* name) const;

protected:
    QUORNetcdfAttributes(int id, int variable) : _id(id), _variable(variable) {}

    int _id;
    int _variable;
};

class QUORNetcdfVariable : public QUORNetcdfAttributes {
public:
    QUORNetcdfVariable(int id, int variable) : QUORNetcdfAttributes(id, variable) {}

    QString getName() const;
    QStringList getDimensions() const;
    std::vector<std::size_t> getShape() const;
    bool isText() const;
    bool isNumeric() const;
    /// The stored numbers as they are; throws for what is no number, too large or damaged.
    std::vector<float> readRaw() const;
    std::vector<double> readDoubles() const;
    /// The rows of a character array, or the strings of a string variable; trailing blanks are cut.
    QStringList readTexts() const;
    /// Unpacked: scale and offset applied, what is missing or outside the valid range is no data, what is
    /// marked as below the threshold no echo.
    std::vector<float> readValues() const;
    /// The resolution of packed integers, 0 of others.
    double getStep() const;

private:
    std::size_t countOf() const;
};

class QUORNetcdfGroup : public QUORNetcdfAttributes {
public:
    explicit QUORNetcdfGroup(int id);

    QString getName() const;
    std::vector<QUORNetcdfGroup> getGroups() const;
    std::optional<QUORNetcdfGroup> findGroup(const QString& name) const;
    std::vector<QUORNetcdfVariable> getVariables() const;
    std::optional<QUORNetcdfVariable> findVariable(const char* name) const;
    /// The first value of a numeric variable that is not missing.
    std::optional<double> findNumber(const char* variable) const;
    /// The first text of a text variable; empty when there is none.
    QString findText(const char* variable) const;
};

/// A file that the netCDF library can open: HDF5, netCDF-4 or classic netCDF. Reading throws a
/// QUORImportError with the library's reason.
class QUORNetcdfFile {
public:
    /// Opens by descriptor, so that no name can be taken for an address.
    explicit QUORNetcdfFile(int descriptor);
    /// Takes the file's content, which must live as long as this object.
    explicit QUORNetcdfFile(const QByteArray& content);
    ~QUORNetcdfFile();
    QUORNetcdfFile(const QUORNetcdfFile&) = delete;
    QUORNetcdfFile& operator=(const QUORNetcdfFile&) = delete;

    QUORNetcdfGroup getRoot() const { return QUORNetcdfGroup(_id); }

private:
    int _id = -1;
};
