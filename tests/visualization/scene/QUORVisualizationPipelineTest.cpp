// SPDX-License-Identifier: MIT
#include "QUORVisualizationPipeline.h"

#include "LogCapture.h"
#include "QUORDisplayState.h"
#include "QUORLayerParameters.h"
#include "ScratchHome.h"
#include "WaitUntil.h"

#include <QSemaphore>

#include <gtest/gtest.h>

#include <vtkActor.h>
#include <vtkPropAssembly.h>
#include <vtkPropCollection.h>
#include <vtkWeakPointer.h>

#include <functional>
#include <stdexcept>

namespace {

using Item = QUORVisualizationPipelineItem;

constexpr int DEADLINE = 20000;

/// Does as it is told at each update, and shows what it is given.
class ScriptedElement : public QUORVisualElement {
public:
    ScriptedElement(QUORVisualGroup* group, int key) : QUORVisualElement(group, key) {}

    vtkSmartPointer<vtkProp> getProp() override { return prop; }
    void update(std::shared_ptr<const QUORLayerParameters>, bool, const QUORAbortFlag& abort) override {
        ++updates;
        if (script) {
            script(abort);
        }
    }
    void invalidate() override { prop = nullptr; }

    std::function<void(const QUORAbortFlag&)> script;
    vtkSmartPointer<vtkProp> prop = vtkSmartPointer<vtkActor>::New();
    std::atomic<int> updates{0};
};

Item::Ptr makeItem() {
    const auto item = std::make_shared<Item>(std::make_shared<QUORDisplayState>());
    for (const auto& group : item->getDisplayState()->getMembers()) {
        group->setParameters(std::make_shared<QUORLayerParameters>());
    }
    return item;
}

/// An item in which one layer's element is scripted.
struct ScriptedItem {
    explicit ScriptedItem(int key = QUORDisplayState::PRODUCT_2D_LAYER) : item(makeItem()) {
        for (const auto& group : item->getGroups()) {
            const auto donor = QUORVisualGroup::makeGroup(group->getKey());
            const auto scripted = std::make_shared<ScriptedElement>(donor.get(), key);
            donor->addElement(scripted);
            group->exchangeElement(*donor, key);
            if (scripted->getGroup() == group.get()) {
                element = scripted;
            }
        }
    }
    Item::Ptr item;
    std::shared_ptr<ScriptedElement> element;
};

/// Counts the pipeline's completion signals on the main thread.
struct Completions {
    explicit Completions(QUORVisualizationPipeline& pipeline) {
        QObject::connect(
            &pipeline, &QUORVisualizationPipeline::allDone, &receiver, [this] { ++count; },
            Qt::QueuedConnection);
    }
    bool waitFor(int expected) const {
        return waitUntil([&] { return count >= expected; }, DEADLINE) && count == expected;
    }
    QObject receiver;
    int count = 0;
};

TEST(QUORVisualizationPipelineTest, itemsComeOutInOrderAndOncePerInput) {
    LogCapture log;
    QUORVisualizationPipeline pipeline;
    const Completions done(pipeline);
    EXPECT_EQ(pipeline.getResultItem(), nullptr);
    EXPECT_TRUE(log.waitFor(QStringLiteral("Input queue empty, going to wait.")));

    ScriptedItem first;
    ScriptedItem second;
    QSemaphore gate;
    first.element->script = [&](const QUORAbortFlag&) { gate.acquire(); };
    pipeline.addInput(first.item);
    pipeline.addInput(second.item);
    pipeline.addInput(first.item);
    EXPECT_TRUE(first.item->isInUse());
    EXPECT_EQ(first.item->getVTKDataSet(), nullptr);
    gate.release(2);
    ASSERT_TRUE(done.waitFor(3));
    EXPECT_EQ(first.element->updates, 2);
    EXPECT_FALSE(first.item->isInUse());
    EXPECT_FALSE(second.item->isInUse());
    EXPECT_EQ(pipeline.getResultItem(), first.item);
    EXPECT_EQ(pipeline.getResultItem(), second.item);
    EXPECT_EQ(pipeline.getResultItem(), first.item);
    EXPECT_EQ(pipeline.getResultItem(), nullptr);
    ASSERT_EQ(first.item->getResultParts().size(), 1U);
    EXPECT_EQ(first.item->getResultParts()[0].prop, first.element->prop);
    EXPECT_EQ(first.item->getResultParts()[0].layerKey, QUORDisplayState::PRODUCT_2D_LAYER);
    EXPECT_EQ(first.item->getResultParts()[0].order, 100);
    EXPECT_EQ(first.item->getResults()->GetParts()->GetNumberOfItems(), 1);
}

TEST(QUORVisualizationPipelineTest, noWakeUpIsLost) {
    QUORVisualizationPipeline pipeline;
    const Completions done(pipeline);
    ScriptedItem scripted;
    for (int i = 1; i <= 300; ++i) {
        pipeline.addInput(scripted.item);
        ASSERT_TRUE(done.waitFor(i));
    }
    EXPECT_EQ(scripted.element->updates, 300);
}

TEST(QUORVisualizationPipelineTest, stopJoinsAtOnceWhateverTheWorkerDoes) {
    LogCapture log;
    for (int i = 0; i < 50; ++i) {
        QUORVisualizationPipeline pipeline;
        pipeline.stop();
        EXPECT_TRUE(pipeline.isFinished());
        pipeline.stop();
    }
    EXPECT_EQ(log.count(QStringLiteral("D: QUORVisualizationPipeline::run() finished.")), 50);

    QUORVisualizationPipeline pipeline;
    ScriptedItem running;
    ScriptedItem waiting;
    QSemaphore started;
    running.element->script = [&](const QUORAbortFlag& abort) {
        started.release();
        while (!abort) {
            QThread::yieldCurrentThread();
        }
    };
    pipeline.addInput(running.item);
    pipeline.addInput(waiting.item);
    ASSERT_TRUE(started.tryAcquire(1, DEADLINE));
    pipeline.stop();
    EXPECT_EQ(waiting.element->updates, 0);
    EXPECT_EQ(pipeline.getResultItem(), nullptr);
    EXPECT_EQ(running.item->getResults(), nullptr);
    EXPECT_FALSE(running.item->isInUse());
    EXPECT_FALSE(waiting.item->isInUse());
    pipeline.addInput(waiting.item);
    EXPECT_FALSE(waiting.item->isInUse());
}

TEST(QUORVisualizationPipelineTest, anAbortedItemIsReportedWithoutResults) {
    QUORVisualizationPipeline pipeline;
    const Completions done(pipeline);
    ScriptedItem scripted(QUORDisplayState::OUTLINE_LAYER);
    pipeline.abort();
    pipeline.addInput(scripted.item);
    ASSERT_TRUE(done.waitFor(1));
    EXPECT_EQ(scripted.element->updates, 0);
    EXPECT_EQ(pipeline.getResultItem(), nullptr);
    EXPECT_FALSE(scripted.item->isInUse());
}

TEST(QUORVisualizationPipelineTest, aFailingElementShowsNothingAndTheRestDoes) {
    LogCapture log;
    QUORVisualizationPipeline pipeline;
    const Completions done(pipeline);
    ScriptedItem scripted(QUORDisplayState::PRODUCT_2D_LAYER);
    const std::function<void(const QUORAbortFlag&)> failures[] = {
        [](const QUORAbortFlag&) { throw std::bad_alloc(); }, [](const QUORAbortFlag&) { throw 5; }};
    int count = 0;
    for (const auto& failure : failures) {
        scripted.element->prop = vtkSmartPointer<vtkActor>::New();
        scripted.element->script = failure;
        pipeline.addInput(scripted.item);
        ASSERT_TRUE(done.waitFor(++count));
        EXPECT_EQ(pipeline.getResultItem(), scripted.item);
        EXPECT_TRUE(scripted.item->getResultParts().empty());
        EXPECT_EQ(log.count(QStringLiteral("E: Building layer LAYER_2DPRODUCT (13) failed: ")), count);
    }
}

TEST(QUORVisualizationPipelineTest, resultsHoldWhatIsVisibleInLayerOrder) {
    const auto collect = [](const std::function<void(QUORDisplayState&)>& prepare) {
        const Item::Ptr item = makeItem();
        for (const auto& group : item->getGroups()) {
            for (const auto& element : QVector<QUORVisualElement::Ptr>(group->getElements())) {
                const auto donor = QUORVisualGroup::makeGroup(group->getKey());
                donor->addElement(std::make_shared<ScriptedElement>(donor.get(), element->getKey()));
                group->exchangeElement(*donor, element->getKey());
            }
        }
        prepare(*item->getDisplayState());
        item->update(QUORAbortFlag());
        item->readResults();
        std::vector<int> keys;
        for (const Item::ResultPart& part : item->getResultParts()) {
            keys.push_back(part.layerKey);
        }
        EXPECT_EQ(item->getResults()->GetParts()->GetNumberOfItems(), int(keys.size()));
        return keys;
    };
    EXPECT_EQ(collect([](QUORDisplayState&) {}), (std::vector<int>{41, 13, 42, 44, 12, 43, 11}));
    EXPECT_EQ(collect([](QUORDisplayState& state) { state.getLayer(13)->setVisible(false); }),
              (std::vector<int>{41, 42, 44, 12, 43, 11}));
    EXPECT_EQ(collect([](QUORDisplayState& state) { state.getGroup(40)->setVisible(false); }),
              (std::vector<int>{13, 12, 11}));
}

TEST(QUORVisualizationPipelineTest, whatIsReplacedLivesUntilItIsDropped) {
    ScriptedItem scripted;
    scripted.item->update(QUORAbortFlag());
    scripted.item->readResults();
    const vtkWeakPointer<vtkProp> old(scripted.element->prop.Get());
    scripted.element->script = [&](const QUORAbortFlag&) {
        scripted.element->prop = vtkSmartPointer<vtkActor>::New();
    };
    scripted.item->update(QUORAbortFlag());
    scripted.item->readResults();
    EXPECT_TRUE(old != nullptr);
    scripted.item->dropRetired();
    EXPECT_TRUE(old == nullptr);
}

TEST(QUORVisualizationPipelineTest, theNextItemAdoptsWhatDoesNotChange) {
    const auto styles = QStringLiteral("QUOR3DVisStyles.conf");
    const auto adopts = [](int key, const std::function<void(Item&)>& prepare) {
        ScriptedItem previous(key);
        prepare(*previous.item);
        Item next(std::make_shared<QUORDisplayState>());
        const QUORVisualElement::Ptr fresh = next.getElement(key);
        next.adoptElements(*previous.item);
        const bool adopted = next.getElement(key) == previous.element;
        EXPECT_EQ(next.getDisplayState()->getLayer(key)->getElement(), next.getElement(key));
        EXPECT_EQ(previous.item->getElement(key), adopted ? fresh : previous.element);
        return adopted;
    };
    const auto asIs = [](Item&) {};
    for (const int key : {11, 41, 42, 43, 44}) {
        EXPECT_TRUE(adopts(key, asIs)) << key;
    }
    EXPECT_FALSE(adopts(12, asIs));
    EXPECT_FALSE(adopts(13, asIs));
    EXPECT_FALSE(adopts(42, [](Item& item) { item.beginUse(); }));
    EXPECT_FALSE(adopts(42, [&](Item&) {
        ScratchHome::writeSettings(styles, QStringLiteral("[LATLONGRID_DAY]\nline\\width=3\n"));
    }));
    ScratchHome::removeSettings(styles);
}

} // namespace
