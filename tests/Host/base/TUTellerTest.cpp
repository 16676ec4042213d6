#include "base/TUTeller.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

// Records every call; optionally hangs up on the teller from inside callBack.
class RecordingListener : public TUListener {
public:
    explicit RecordingListener(std::vector<int> *log = nullptr, int id = 0) : log_(log), id_(id) {}
    void callBack(TUTeller *teller) override
    {
        ++calls;
        if (log_)
            log_->push_back(id_);
        if (hangUpOnCall)
            hangUp(teller);
    }
    void tellerDestroyed(TUTeller *teller) override { destroyed.push_back(teller); }

    int calls = 0;
    bool hangUpOnCall = false;
    std::vector<TUTeller *> destroyed;

private:
    std::vector<int> *log_;
    int id_;
};

TEST(TUTeller, TellsListenersInPhoningOrderOnceEach)
{
    TUTeller teller;
    std::vector<int> log;
    RecordingListener a(&log, 1), b(&log, 2);
    b.phone(&teller);
    a.phone(&teller);
    a.phone(&teller);  // twice is once
    teller.tell();
    EXPECT_EQ(log, (std::vector<int>{2, 1}));
    EXPECT_EQ(teller.listenerCount(), 2);
    a.phone(nullptr);  // ignored
    EXPECT_EQ(teller.listenerCount(), 2);
}

TEST(TUTeller, HangUpStopsCallsEvenDuringARound)
{
    TUTeller teller;
    RecordingListener a, b;
    a.phone(&teller);
    b.phone(&teller);
    a.hangUpOnCall = true;
    teller.tell();
    teller.tell();
    EXPECT_EQ(a.calls, 1);
    EXPECT_EQ(b.calls, 2);
    EXPECT_FALSE(a.isListeningTo(&teller));
    b.hangUp(&teller);
    teller.tell();
    EXPECT_EQ(b.calls, 2);
    EXPECT_EQ(teller.listenerCount(), 0);
}

TEST(TUTeller, EitherSideMayDieFirst)
{
    RecordingListener listener;
    auto teller = std::make_unique<TUTeller>();
    TUTeller *raw = teller.get();
    listener.phone(raw);
    teller.reset();
    ASSERT_EQ(listener.destroyed.size(), 1u);
    EXPECT_EQ(listener.destroyed[0], raw);
    EXPECT_FALSE(listener.isListeningTo(raw));

    TUTeller survivor;
    {
        RecordingListener shortLived;
        shortLived.phone(&survivor);
        EXPECT_EQ(survivor.listenerCount(), 1);
    }
    EXPECT_EQ(survivor.listenerCount(), 0);
    survivor.tell();  // must not reach the dead listener
}

}  // namespace
