#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/MainLoop.h"
#include "platform/backend/CaptureBackend.h"

/// Brings what a source delivers to the main thread.
class FrameCatcher : public platform::VideoSink {
  public:
    struct State {
        platform::VideoFrame latest;
        int frames = 0;
        std::vector<std::string> failures;
    };

    void frame(platform::VideoFrame frame) override {
        platform::postToMainThread([state = state_, frame = std::move(frame)] {
            state->latest = frame;
            ++state->frames;
        });
    }
    void failed(std::string reason) override {
        platform::postToMainThread([state = state_, reason] { state->failures.push_back(reason); });
    }

    const State& state() const { return *state_; }

  private:
    std::shared_ptr<State> state_ = std::make_shared<State>();  // shared with what is posted
};
