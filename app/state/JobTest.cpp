#include "app/state/Job.h"

#include "app/state/WindowFixture.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace tesserine::app {
namespace {

class JobTest : public test::WindowFixture {
public:
    JobTest() { watch(*job); }
    ~JobTest() override { environment->waitForBackground(); }

    void watch(Job& watched) {
        QObject::connect(
            &watched, &Job::finished, &watched, [this] { told.emplace_back("finished"); });
        QObject::connect(&watched, &Job::failed, &watched, [this](const QString& sentence) {
            told.push_back("failed: " + sentence.toStdString());
        });
    }

    std::unique_ptr<Job> job = std::make_unique<Job>(*environment);
    std::vector<std::string> told;
};

TEST_F(JobTest, TellsHowFarItIsAndThatItEnded) {
    std::atomic<bool> isSeen{false};
    QObject::connect(
        job.get(), &Job::progressed, job.get(), [&](std::size_t done, std::size_t all) {
            if (done == 3 && all == 7) isSeen = true;
        });
    job->start([&](const Job::Given& given) {
        given.progress(3, 7);
        while (!isSeen && !given.stop.stop_requested()) {
            QThread::msleep(1);
        }
        environment->notes().createNote(given.context, {.title = "Made"});
        given.context.save();
    });
    EXPECT_TRUE(job->isRunning());
    ASSERT_TRUE(waitUntil([&] { return !job->isRunning(); }));
    EXPECT_TRUE(isSeen);
    EXPECT_EQ(told, std::vector<std::string>{"finished"});
    EXPECT_EQ(context().count<CDNote>(), 1U);
}

TEST_F(JobTest, AFailureIsASentenceAndTheNextWorkCanBegin) {
    job->start([](const Job::Given&) { throw UserError("The disk is full."); });
    ASSERT_TRUE(waitUntil([&] { return !job->isRunning(); }));
    job->start([](const Job::Given&) {});
    ASSERT_TRUE(waitUntil([&] { return !job->isRunning(); }));
    EXPECT_EQ(told, (std::vector<std::string>{"failed: The disk is full.", "finished"}));
}

TEST_F(JobTest, EndsWhenCancelledWhenItsPageGoesAndWhenTheProgramEnds) {
    const auto ended = std::make_shared<std::atomic<int>>(0);
    const Job::Work work = [ended](const Job::Given& given) {
        while (!given.stop.stop_requested()) {
            QThread::msleep(1);
        }
        ++*ended;
    };
    job->start(work);
    job->cancel();
    ASSERT_TRUE(waitUntil([&] { return told.size() == 1; }));
    EXPECT_TRUE(job->isCancelled());

    job->start(work);
    EXPECT_FALSE(job->isCancelled()) << "of the work that runs now";
    job.reset();
    EXPECT_TRUE(waitUntil([&] { return *ended == 2; }));

    Job last(*environment);
    last.start(work);
    environment.reset();
    EXPECT_EQ(*ended, 3);
    open(setting());
    settle();
    EXPECT_EQ(told.size(), 1U) << "nobody is told who is gone";
}

}  // namespace
}  // namespace tesserine::app
