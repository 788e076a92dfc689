// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <QVector>

#include <vtkSmartPointer.h>

#include <array>
#include <memory>
#include <optional>

class QUORDataType;
class QUORSettingsReader;
class vtkColorTransferFunction;
class vtkScalarBarActor;

/// Turns data values of one product into colours: one colour scale of the operator's colours file with its
/// colour set, and the transfer function built from them. The file is opened afresh for every look-up and
/// every load and is only read.
///
/// A map that the file does not give (no scale or set, or one without seams or points) is replaced by the
/// built-in grey map over the data type's range, with a warning that names it. A value of its owner's
/// thread; copies share nothing.
class QUORColormap {
public:
    using Ptr = std::shared_ptr<QUORColormap>;
    using CPtr = std::shared_ptr<const QUORColormap>;

    /// The unit of the seams: raw stored values, or physical values as in the file.
    enum ValueRange { Absolute = 0, Display = 1 };
    /// In a mixed map each point decides for itself.
    enum Type { PiecewiseLinear = 0, PiecewiseConstant = 1, Mixed = 2 };
    enum ColorSpace { Rgb = 0, Hsv = 1 };

    /// Components are 0 to 255.
    struct Point {
        int lowerRed = 0;
        int lowerGreen = 0;
        int lowerBlue = 0;
        int upperRed = 0;
        int upperGreen = 0;
        int upperBlue = 0;
        bool constant = true; ///< lower and upper colour are the same
    };
    struct ColorScaleListItem {
        int id = 0;
        QString name;
    };

    /// The built-in grey map "Fixed", not constructed.
    QUORColormap();
    /// The scale of that name for the data type; scale 1, with a warning, when there is none.
    QUORColormap(const QString& name, const QUORDataType& dataType, ValueRange range);
    QUORColormap(int scaleId, const QUORDataType& dataType, ValueRange range);
    QUORColormap(const QUORColormap& other);
    QUORColormap(const QUORColormap& other, const QUORDataType& dataType, ValueRange range);
    QUORColormap& operator=(const QUORColormap& other);
    virtual ~QUORColormap();

    void load(int scaleId);
    /// Converts the seams; the transfer function follows at the next `construct`.
    void changeValueRange(ValueRange range, const QUORDataType& dataType);
    /// Builds the transfer function; false, and no function, without a point or a seam.
    bool construct();
    /// Rewrite every node of an existing transfer function, keeping position and colour. A constant piece
    /// reaches from its seam to the next.
    void setPiecewiseLinear();
    void setPiecewiseConstant();

    /// Red, green and blue, 0 to 255; black when there is no transfer function.
    std::array<int, 3> getColor(double value) const;
    /// A new colour bar; position and size in normalised viewport coordinates.
    vtkSmartPointer<vtkScalarBarActor> makeBar(const QString& title, double x, double y, double width,
                                               double height) const;
    /// The same for a bar that is there.
    void dressBar(vtkScalarBarActor& bar, const QString& title, double x, double y, double width,
                  double height) const;
    /// Changes whenever a file that maps are read from does.
    static QString makeStamp();
    /// Null until constructed.
    vtkColorTransferFunction* getMap() const;

    Type getType() const { return _type; }
    ColorSpace getColorSpace() const { return _colorSpace; }
    ValueRange getValueRange() const { return _valueRange; }
    QString getName() const { return _name; }
    QString getColorSetName() const { return _colorSetName; }
    bool isLowSaturate() const { return _lowSaturate; }
    bool isHighSaturate() const { return _highSaturate; }
    /// A printf format for one double.
    QString getLabelFormat() const { return _labelFormat; }
    QString getDataUnits() const { return _dataUnits; }
    const QVector<Point>& getColors() const { return _colors; }
    const QVector<double>& getScale() const { return _scale; }
    int getNDefinedColors() const { return int(_colors.size()); }
    int getNDefinedSeams() const { return int(_scale.size()); }
    int getNColorsInUse() const;
    int getNSeamsInUse() const;
    int getNRenderedColors() const;

    static int getColorGroupIdForDataType(int rawType);
    static QString getDataTypeLegendInfo(int rawType);
    static QList<ColorScaleListItem> getScalesForDataType(int rawType);
    static int getColormapId(const QString& name, int rawType);

private:
    /// Of absolute seams: what they were made from, and the range within which that says the same.
    /// A stored value between the seams of a point and the next, and what it stands for.
    struct Mixture {
        int point = 0;
        double raw = 0.0;
        double display = 0.0;
    };
    struct Limits {
        QVector<double> displaySeams;
        QVector<double> firstRaw;  ///< the lowest stored value that is not below each seam
        QVector<Mixture> mixtures; ///< where colours mix in another quantity than is stored
        double lowestDisplay = 0.0;
        double highestDisplay = 0.0;
        unsigned int lowestRaw = 0;
        unsigned int highestRaw = 0;
    };

    static QList<ColorScaleListItem> readScales(QUORSettingsReader& reader, int rawType);
    static int findScale(const QList<ColorScaleListItem>& scales, const QString& name, int rawType);
    void build(const QString& wanted, const QUORDataType& dataType, ValueRange range);
    void load(QUORSettingsReader& reader, int scaleId);
    int loadScale(QUORSettingsReader& reader, int scaleId);
    void loadColorSet(QUORSettingsReader& reader, int setId);
    void useGrey(const QUORDataType& dataType);
    void rewriteNodes(double midpoint, double sharpness);
    double nodeAt(int point) const;
    bool isStep(int point) const;
    vtkSmartPointer<vtkColorTransferFunction> makeFunction(const QVector<double>& seams) const;
    /// Colours mix in display values, as in the bar, also where stored values are logarithms.
    void findMixtures(const QUORDataType& dataType);
    void addMixtures();
    void limitNodes();

    Type _type = PiecewiseLinear;
    ColorSpace _colorSpace = Rgb;
    ValueRange _valueRange = Display;
    QString _name;
    QString _colorSetName;
    bool _lowSaturate = true;
    bool _highSaturate = true;
    QString _labelFormat;
    QString _dataUnits;
    QVector<Point> _colors;
    QVector<double> _scale;
    std::optional<Limits> _limits;
    vtkSmartPointer<vtkColorTransferFunction> _map;
};
