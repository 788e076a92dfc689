// SPDX-License-Identifier: MIT
#include "QUORLegend.h"

#include "QUORLegendBox.h"
#include "QUORLog.h"

#include <vtkCoordinate.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkProperty2D.h>
#include <vtkTextProperty.h>

namespace {

constexpr double BOX_OPACITY = 0.6;
constexpr QUORPictureArea AREA{0.01, 0.01, 0.35, 0.18};

void place(vtkLegendBoxActor* legend) {
    legend->GetPositionCoordinate()->SetCoordinateSystemToNormalizedViewport();
    legend->GetPositionCoordinate()->SetValue(AREA.left, AREA.bottom);
    // The second corner, relative to the first.
    legend->GetPosition2Coordinate()->SetCoordinateSystemToNormalizedViewport();
    legend->GetPosition2Coordinate()->SetValue(AREA.right - AREA.left, AREA.top - AREA.bottom);
}

bool isLight(const QUORStyleGroup::Color& color) {
    return 0.299 * color[0] + 0.587 * color[1] + 0.114 * color[2] > 0.5;
}

} // namespace

vtkSmartPointer<QUORLegendBox> QUORLegend::make(const QStringList& lines) {
    auto legend = vtkSmartPointer<QUORLegendBox>::New();
    vtkTextProperty* text = legend->GetEntryTextProperty();
    text->SetFontFamilyToArial();
    text->SetFontSize(12);
    text->ItalicOff();
    text->ShadowOff();
    legend->GetBoxProperty()->SetColor(0.0, 0.0, 0.0);
    legend->GetBoxProperty()->SetOpacity(BOX_OPACITY);
    legend->BorderOn();
    place(legend);

    // An entry needs a symbol; one point without a cell draws nothing.
    vtkNew<vtkPoints> points;
    points->InsertNextPoint(0.0, 0.0, 0.0);
    vtkNew<vtkPolyData> symbol;
    symbol->SetPoints(points);
    legend->SetNumberOfEntries(int(lines.size()));
    for (int i = 0; i < lines.size(); ++i) {
        legend->SetEntryString(i, lines[i].toUtf8().constData());
        legend->SetEntrySymbol(i, symbol);
        QUORLog::Instance().logDebug(QStringLiteral("Legend ") + QString::number(i) + QLatin1Char(' ') +
                                     lines[i]);
    }
    legend->VisibilityOn();
    return legend;
}

QUORPictureArea QUORLegend::getArea() {
    return AREA;
}

void QUORLegend::setColors(QUORLegendBox* legend, const QUORStyleGroup::Color& text,
                           const QUORStyleGroup::Color& veil) {
    QUORStyleGroup::Color color = text;
    legend->GetEntryTextProperty()->SetColor(color.data());
    for (int i = 0; i < legend->GetNumberOfEntries(); ++i) {
        legend->SetEntryColor(i, color.data());
    }
    const bool light = isLight(text);
    legend->SetBox(light);
    legend->SetUseBackground(!light);
    QUORStyleGroup::Color background = veil;
    legend->SetBackgroundColor(background.data());
    legend->SetBackgroundOpacity(BOX_OPACITY);
}

void QUORLegend::setBoxColors(vtkProperty2D& box, const QUORStyleGroup::Color& text,
                              const QUORStyleGroup::Color& veil) {
    QUORStyleGroup::Color color = isLight(text) ? QUORStyleGroup::Color{} : veil;
    box.SetColor(color.data());
    box.SetOpacity(BOX_OPACITY);
}
