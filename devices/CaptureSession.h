#pragma once

#include <memory>

class AVCaptureSession;

/// The session that feeds the preview; empty until the first open, then replaced by each.
extern std::shared_ptr<AVCaptureSession> g_captureSession;
