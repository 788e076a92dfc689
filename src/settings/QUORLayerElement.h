// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

/// What a display layer needs of the visual element that was last built for it.
class QUORLayerElement {
public:
    using Ptr = std::shared_ptr<QUORLayerElement>;
    using CPtr = std::shared_ptr<const QUORLayerElement>;

    virtual ~QUORLayerElement() = default;

    /// Drops what was built; the next update builds from scratch.
    virtual void invalidate() = 0;
    /// Whether the element adds nothing to the scene: it has no prop, or, for terrain, an assembly
    /// without parts.
    virtual bool isEmpty() = 0;
};
