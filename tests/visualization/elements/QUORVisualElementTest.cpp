// SPDX-License-Identifier: MIT
#include "QUORVisualElement.h"

#include "LogCapture.h"
#include "QUORAbortFlag.h"
#include "QUORDisplayState.h"
#include "QUORLayerParameters2d.h"
#include "QUORLayerParameters3dOutline.h"
#include "QUORTypedVisualElement.h"
#include "QUORVisualGroup.h"

#include <gtest/gtest.h>

#include <vtkActor.h>
#include <vtkAssembly.h>

namespace {

using Record = QUORLayerParameters3dOutline;

/// The smallest kind: a new actor at each build.
class TestElement : public QUORTypedVisualElement<Record> {
public:
    TestElement(QUORVisualGroup* group, int key, bool talks)
        : QUORTypedVisualElement(group, key, {"TestElement", "Creating it.", talks, talks}) {}

    void invalidate() override {
        _params.reset();
        _prop = nullptr;
        ++invalidated;
    }
    bool aborted = false;
    int shown = 0;
    int invalidated = 0;

protected:
    void rebuild(const QUORAbortFlag& abort) override {
        aborted = bool(abort);
        _prop = vtkSmartPointer<vtkActor>::New();
    }
    void show(bool visible) override { shown += visible ? 1 : 0; }
};

std::shared_ptr<Record> makeRecord(double height) {
    auto record = std::make_shared<Record>();
    record->setDataHeight(height);
    return record;
}

TEST(QUORVisualElementTest, updatesFollowTheRecord) {
    LogCapture log;
    QUORAbortFlag abort;
    const auto group = QUORVisualGroup::makeGroup(10);
    TestElement element(group.get(), 11, true);
    const struct {
        const char* name;
        std::shared_ptr<QUORLayerParameters> record;
        bool visible;
        const char* line;
        bool isNew;
        bool isEmpty;
    } rows[] = {
        {"none", nullptr, true, "layer parameters not set.", false, true},
        {"first", makeRecord(1), true, "Creating it.", true, false},
        {"equal", makeRecord(1), false, "No need to update.", false, false},
        {"changed", makeRecord(2), true, "Re-creating changed visualization..", true, false},
        {"wrong class", std::make_shared<QUORLayerParameters2d>(), true, "layer parameters not set.", false,
         true},
        {"after that", makeRecord(2), true, "Creating it.", true, false},
    };
    int shown = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        log.clear();
        const vtkSmartPointer<vtkProp> before = element.getProp();
        element.update(row.record, row.visible, abort);
        EXPECT_EQ(log.lines(),
                  (QStringList{QStringLiteral("D: TestElement::update() called."),
                               QStringLiteral("D: TestElement::update(): ") + QLatin1String(row.line),
                               QStringLiteral("D: TestElement::update() finished.")}));
        EXPECT_EQ(element.getProp() && element.getProp() != before, row.isNew);
        EXPECT_EQ(element.isEmpty(), row.isEmpty);
        shown += row.visible && !row.isEmpty ? 1 : 0;
        EXPECT_EQ(element.shown, shown);
    }
    EXPECT_FALSE(element.aborted);

    abort.set();
    TestElement quiet(group.get(), 11, false);
    log.clear();
    quiet.update(makeRecord(1), true, abort);
    EXPECT_EQ(log.lines(), QStringList{QStringLiteral("D: TestElement::update(): Creating it.")});
    EXPECT_TRUE(quiet.aborted);
}

TEST(QUORVisualElementTest, theFactoryMakesAllSevenKinds) {
    const QUORDisplayState state;
    QStringList kinds;
    for (const QUORDisplayGroup::Ptr& displayGroup : state.getMembers()) {
        const auto group = QUORVisualGroup::makeGroup(displayGroup->getKey());
        for (const QUORDisplayLayer::Ptr& layer : displayGroup->getMembers()) {
            const auto element = QUORVisualElement::makeElement(group.get(), layer->getKey());
            EXPECT_EQ(element->getGroup(), group.get());
            EXPECT_EQ(element->getKey(), layer->getKey());
            EXPECT_TRUE(element->isEmpty());
            LogCapture log;
            element->update(nullptr, true, QUORAbortFlag());
            kinds << log.lines()
                         .filter(QStringLiteral("update(): layer parameters not set."))
                         .value(0)
                         .section(QLatin1Char(':'), 1, 1)
                         .trimmed();
        }
    }
    EXPECT_EQ(kinds.join(QLatin1Char(' ')).toStdString(),
              "QUOR3DOutlineElement QUOR3DVisualElement QUOR2DVisualElement QUOR3DTerrainElement "
              "QUORLatLonGridElement QUORRadarRingsElement QUORGeoLabelsElement");
}

TEST(QUORVisualElementTest, terrainWithoutPartsIsEmpty) {
    class Terrain : public QUORVisualElement {
    public:
        explicit Terrain(int key) : QUORVisualElement(nullptr, key) {}
        vtkSmartPointer<vtkProp> getProp() override { return assembly; }
        void update(std::shared_ptr<const QUORLayerParameters>, bool, const QUORAbortFlag&) override {}
        vtkSmartPointer<vtkAssembly> assembly = vtkSmartPointer<vtkAssembly>::New();
    };
    Terrain terrain(QUORDisplayState::TERRAIN_LAYER);
    Terrain product(QUORDisplayState::PRODUCT_3D_LAYER);
    EXPECT_TRUE(terrain.isEmpty());
    EXPECT_FALSE(product.isEmpty());
    terrain.assembly->AddPart(vtkSmartPointer<vtkActor>::New());
    EXPECT_FALSE(terrain.isEmpty());
}

TEST(QUORVisualElementTest, aGroupWithoutParametersInvalidatesItsElements) {
    LogCapture log;
    const auto group = QUORVisualGroup::makeGroup(7);
    EXPECT_EQ(group->getKey(), 7);
    const auto first = std::make_shared<TestElement>(group.get(), 11, false);
    const auto second = std::make_shared<TestElement>(group.get(), 12, false);
    group->addElement(first);
    group->addElement(second);
    group->update(makeRecord(1), false);
    EXPECT_TRUE(group->getParams());
    EXPECT_EQ(first->invalidated + second->invalidated, 0);
    group->update(nullptr, true);
    EXPECT_FALSE(group->getParams());
    EXPECT_EQ(first->invalidated, 1);
    EXPECT_EQ(second->invalidated, 1);
    EXPECT_EQ(log.count(QStringLiteral("D: No parameters -> invalidate visual group.")), 1);
}

TEST(QUORVisualElementTest, exchangedElementsKeepTheirGeometry) {
    const QUORAbortFlag abort;
    const auto before = QUORVisualGroup::makeGroup(10);
    const auto after = QUORVisualGroup::makeGroup(10);
    const auto built = std::make_shared<TestElement>(before.get(), 11, false);
    before->addElement(built);
    after->addElement(std::make_shared<TestElement>(after.get(), 11, false));
    built->update(makeRecord(1), true, abort);
    after->exchangeElement(*before, 12);
    EXPECT_NE(after->getElements()[0], built);
    after->exchangeElement(*before, 11);
    ASSERT_EQ(after->getElements()[0], built);
    EXPECT_EQ(built->getGroup(), after.get());
    EXPECT_EQ(before->getElements()[0]->getGroup(), before.get());
    EXPECT_TRUE(before->getElements()[0]->isEmpty());
    const vtkSmartPointer<vtkProp> prop = built->getProp();
    built->update(makeRecord(1), true, abort);
    EXPECT_EQ(built->getProp(), prop);
}

} // namespace
