#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <functional>
#include <utility>

#include "platform/linux/Ioctl.h"

namespace platform {

/// A node that expects a script of calls, each with the arguments that its step checks, and gives
/// the answers written there. A call that is not next in the script fails the test, and so does
/// the end of the test when steps are left over.
class ScriptedNode : public Ioctl {
  public:
    ScriptedNode() = default;
    ScriptedNode(const ScriptedNode&) = delete;
    ScriptedNode& operator=(const ScriptedNode&) = delete;
    ~ScriptedNode() override { EXPECT_TRUE(steps_.empty()) << steps_.size() << " calls missing"; }

    /// Expects `request`; `answer` checks and fills its argument and returns the status.
    template <class Argument>
    void expect(unsigned long request, std::function<int(Argument&)> answer) {
        steps_.push_back({request, [answer](void* argument) {
                              return answer(*static_cast<Argument*>(argument));
                          }});
    }

    int call(unsigned long request, void* argument) override {
        if (steps_.empty() || steps_.front().request != request) {
            ADD_FAILURE() << "call " << std::hex << request << " is not in the script";
            return ENOTTY;
        }
        const Step step = std::move(steps_.front());
        steps_.pop_front();
        return step.answer(argument);
    }

  private:
    struct Step {
        unsigned long request;
        std::function<int(void*)> answer;
    };

    std::deque<Step> steps_;
};

}  // namespace platform
