// SPDX-License-Identifier: MIT
#pragma once

#include "QUORStyleGroup.h"

#include <QString>

#include <vtkSmartPointer.h>

class QUOR2DLayerActor;
class vtkPolyDataMapper;
class vtkProperty;

/// Adds texts that lie flat in the scene to a layer actor: one geometry a text, shared by the actors that
/// show it, and one property for all of them. A halo, where the style asks for one, sets them off from light
/// and dark ground alike: the letters' edges, drawn wide under each label. Used while a layer is being built.
class QUORFlatLabels {
public:
    /// Extents of a text's geometry, before the scale.
    struct Size {
        double width = 0.0;
        double height = 0.0;
    };

    /// `style` holds "label/color", "label/halo/color" and "label/halo/width"; `scale` is the size in the
    /// scene of one unit of the text geometry, about a letter's height.
    QUORFlatLabels(QUOR2DLayerActor& layer, const QUORStyleGroup& style, double scale);
    ~QUORFlatLabels();
    QUORFlatLabels(const QUORFlatLabels&) = delete;
    QUORFlatLabels& operator=(const QUORFlatLabels&) = delete;

    /// Begins a new text for the following calls.
    void setText(const QString& text);
    Size measure() const;
    /// One more label with the current text; its lower left corner lies near the position, at height 0. Its
    /// halo comes before it.
    void addAt(double x, double y);

private:
    void addActor(vtkProperty* property, double x, double y, double haloWidth);

    QUOR2DLayerActor& _layer;
    double _scale;
    vtkSmartPointer<vtkProperty> _property;
    /// Null without a halo.
    vtkSmartPointer<vtkProperty> _haloProperty;
    double _haloWidth = 0.0;
    QString _text;
    vtkSmartPointer<vtkPolyDataMapper> _mapper;
};
