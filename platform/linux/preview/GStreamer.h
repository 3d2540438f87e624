#pragma once

#include <gst/gst.h>

#include <memory>
#include <string>

namespace platform {

/// Gives back what GStreamer counts references to.
struct GstRelease {
    void operator()(GstBuffer* buffer) const { gst_buffer_unref(buffer); }
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    void operator()(GstStructure* structure) const { gst_structure_free(structure); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(gpointer object) const { gst_object_unref(object); }
};

using GstBufferPtr = std::unique_ptr<GstBuffer, GstRelease>;
using GstCapsPtr = std::unique_ptr<GstCaps, GstRelease>;
using GstSamplePtr = std::unique_ptr<GstSample, GstRelease>;
using GstStructurePtr = std::unique_ptr<GstStructure, GstRelease>;
using GErrorPtr = std::unique_ptr<GError, GstRelease>;
using GstElementPtr = std::unique_ptr<GstElement, GstRelease>;
using GstBusPtr = std::unique_ptr<GstBus, GstRelease>;
using GstBufferPoolPtr = std::unique_ptr<GstBufferPool, GstRelease>;
using GstPluginPtr = std::unique_ptr<GstPlugin, GstRelease>;
using GstPadPtr = std::unique_ptr<GstPad, GstRelease>;

/// Loads GStreamer once for the process: empty, or why it can't be used. From any thread.
std::string loadGStreamer();

/// Loads the one plug-in with this name, once: empty, or why it can't be used. From any thread;
/// GStreamer is loaded by then.
std::string loadPlugin(const std::string& name);

/// Makes one of the elements that the preview is made of, with what it needs loaded. On failure
/// returns null and says why in `failure`, in a sentence.
GstElement* makeElement(const std::string& name, std::string& failure);

}  // namespace platform
