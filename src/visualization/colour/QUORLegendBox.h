// SPDX-License-Identifier: MIT
#pragma once

#include <vtkLegendBoxActor.h>

/// The legend's box, which is fitted to its text: it tells how, for what shall stand in line with it.
class QUORLegendBox : public vtkLegendBoxActor {
public:
    static QUORLegendBox* New();
    vtkTypeMacro(QUORLegendBox, vtkLegendBoxActor)

    /// In pixels of the viewport.
    struct Layout {
        double left = 0.0;
        double right = 0.0;
        double top = 0.0;
        double textLeft = 0.0;
        int fontSize = 0;

        bool operator==(const Layout&) const = default;
    };
    /// As it will be drawn there.
    Layout FindLayout(vtkViewport* viewport);

    QUORLegendBox(const QUORLegendBox&) = delete;
    QUORLegendBox& operator=(const QUORLegendBox&) = delete;

protected:
    QUORLegendBox();
    ~QUORLegendBox() override;
};
