// SPDX-License-Identifier: MIT
#include "QUORDisplayState.h"

#include "QUORLayerParameters2d.h"
#include "QUORLayerParameters3dOutline.h"

#include <gtest/gtest.h>

namespace {

class CountingElement : public QUORLayerElement {
public:
    void invalidate() override { ++invalidated; }
    bool isEmpty() override { return invalidated > 0; }

    int invalidated = 0;
};

class ForeignParameters : public QUORLayerParameters {};

TEST(QUORDisplayStateTest, FindsGroupsAndLayersByKey) {
    const QUORDisplayState state;
    EXPECT_EQ(state.getLayer(10), state.getGroup(10));
    EXPECT_EQ(state.getLayer(43)->getName(), QStringLiteral("LAYER_GEOLABELS"));
    EXPECT_EQ(state.getLayer(99), nullptr);
    EXPECT_EQ(state.getGroup(11), nullptr);
    EXPECT_EQ(state.getGroup(10)->getLayer(10), nullptr);
    EXPECT_EQ(state.getGroup(10)->getLayer(41), nullptr);
}

TEST(QUORDisplayStateTest, CopiesWhatIsShownAndNothingElse) {
    QUORDisplayState a;
    QUORDisplayState b;
    b.setName(QStringLiteral("B"));
    b.getLayer(13)->setVisible(false);
    b.getLayer(40)->setOpacity(20);
    b.getGroup(40)->setOpen(false);
    b.getLayer(41)->setParameters(std::make_shared<QUORLayerParameters>());
    a.getLayer(13)->setParameters(std::make_shared<QUORLayerParameters2d>());
    a.getLayer(13)->setElement(std::make_shared<CountingElement>());
    const auto layer = a.getLayer(13);
    a.copyState(b);
    EXPECT_FALSE(a.has2DEnabled());
    a.getLayer(13)->setVisible(true);
    EXPECT_TRUE(a.has2DEnabled());
    a.getGroup(10)->setVisible(false);
    EXPECT_FALSE(a.has2DEnabled());
    EXPECT_EQ(a.getGroup(40)->getOpacity(), 20);
    EXPECT_FALSE(a.getGroup(40)->isOpen());
    EXPECT_EQ(a.getName(), QStringLiteral("Default"));
    EXPECT_EQ(a.getLayer(13), layer);
    EXPECT_EQ(layer->getOrder(), 100);
    EXPECT_NE(layer->getParameters(), nullptr);
    EXPECT_NE(layer->getElement(), nullptr);
    EXPECT_EQ(a.getLayer(41)->getParameters(), nullptr);
    EXPECT_TRUE(a.hasChanged(b, nullptr));
}

TEST(QUORDisplayStateTest, KeepsACopyOfParameters) {
    QUORDisplayLayer layer(11, QStringLiteral("L"), 1);
    const auto record = std::make_shared<QUORLayerParameters3dOutline>();
    record->setDataHeight(7.0);
    layer.setParameters(record);
    record->setDataHeight(8.0);
    const auto kept = std::dynamic_pointer_cast<QUORLayerParameters3dOutline>(layer.getParameters());
    ASSERT_TRUE(kept);
    EXPECT_NE(kept, record);
    EXPECT_EQ(kept->getDataHeight(), 7.0);
    layer.setParameters(nullptr);
    EXPECT_EQ(layer.getParameters(), nullptr);
    EXPECT_DEATH(layer.setParameters(std::make_shared<ForeignParameters>()),
                 "QUORDisplayLayer::setParameters");
}

TEST(QUORDisplayStateTest, ResetsParametersEverywhere) {
    QUORDisplayState state;
    const auto element = std::make_shared<CountingElement>();
    const int keys[] = {10, 11, 12, 13, 40, 41, 42, 43, 44};
    for (const int key : keys) {
        state.getLayer(key)->setParameters(std::make_shared<QUORLayerParameters>());
    }
    state.getLayer(12)->setElement(element);
    EXPECT_FALSE(state.getLayer(12)->isEmpty());
    state.resetParameters();
    for (const int key : keys) {
        EXPECT_EQ(state.getLayer(key)->getParameters(), nullptr) << key;
    }
    EXPECT_EQ(element->invalidated, 1);
    EXPECT_TRUE(state.getLayer(12)->isEmpty());
}

} // namespace
