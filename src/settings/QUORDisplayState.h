// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDisplayGroup.h"

#include <span>

/// Which parts of the scene are shown: always the same tree of two groups and seven layers, so that states
/// differ only in visibility, opacity and name. Belongs to one owner at a time; the pipeline works on a
/// copy of its own, made with `copyState`.
class QUORDisplayState {
public:
    using Ptr = std::shared_ptr<QUORDisplayState>;
    using CPtr = std::shared_ptr<const QUORDisplayState>;

    /// Keys of the groups and layers.
    static constexpr int RADAR_GROUP = 10;
    static constexpr int OUTLINE_LAYER = 11;
    static constexpr int PRODUCT_3D_LAYER = 12;
    static constexpr int PRODUCT_2D_LAYER = 13;
    static constexpr int GEO_GROUP = 40;
    static constexpr int TERRAIN_LAYER = 41;
    static constexpr int LAT_LON_GRID_LAYER = 42;
    static constexpr int GEO_LABELS_LAYER = 43;
    static constexpr int RANGE_RINGS_LAYER = 44;

    /// A group, or a layer of one.
    struct Row {
        int key;
        int group; ///< that of a layer; of a group its own key
        const char* name;
        const char* word;  ///< on a command line
        const char* label; ///< in a window, translated in the context "QUORDisplayState"
        int order;         ///< of drawing
        bool lasting;      ///< shows what lasts from one product to the next

        bool isGroup() const { return key == group; }
    };
    /// Each group before its layers.
    static std::span<const Row> getRows();
    /// One of the keys above.
    static const Row& getRow(int key);

    QUORDisplayState();
    QUORDisplayState(const QUORDisplayState&) = delete;
    QUORDisplayState& operator=(const QUORDisplayState&) = delete;

    /// Builds the tree anew, everything visible and opaque, named "Default".
    void constructDefaultState();

    QString getName() const { return _name; }
    void setName(const QString& name) { _name = name; }
    const QVector<QUORDisplayGroup::Ptr>& getMembers() const { return _members; }
    /// The group with that key, or null.
    QUORDisplayGroup::Ptr getGroup(int key) const;
    /// The group or layer with that key, or null.
    QUORDisplayLayer::Ptr getLayer(int key) const;
    /// Whether the 2D product is shown: its layer and the group that holds it.
    bool has2DEnabled() const;
    /// Whether what was built of that layer for the last image may serve the next one; false for an unknown
    /// key.
    static bool isLasting(int layerKey);

    /// Takes over visibility and opacity, not the name; parameters and elements stay with this state.
    void copyState(const QUORDisplayState& other);
    /// Always true; asserts that both are states of the same tree.
    bool hasChanged(const QUORDisplayState& previous, QStringList* changes) const;
    void resetParameters();
    /// To the log, at debug level.
    void printDisplayState() const;

private:
    QString _name;
    QVector<QUORDisplayGroup::Ptr> _members;
};
