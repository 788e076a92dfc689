// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerParametersTerrain.h"
#include "QUORTypedVisualElement.h"

/// The ground under the radar data: the prop of the record's terrain set, which it lets load its files. The
/// prop is shared, not copied, so that elements of several images show the same one and its graphics
/// resources last as long as the set.
class QUOR3DTerrainElement : public QUORTypedVisualElement<QUORLayerParametersTerrain> {
public:
    QUOR3DTerrainElement(QUORVisualGroup* group, int key);

    void invalidate() override;

protected:
    void rebuild(const QUORAbortFlag& abort) override;

private:
    void createVTK(const QUORAbortFlag& abort);
};
