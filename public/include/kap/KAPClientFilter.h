// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "kap/KAPClientBase.h"

// Bases of the sinks and filters that a component implements itself and hands to the host
// (KAPFilter.h). Override the pure functions; the host's sink or filter forwards to them.
//
// Errors: an operation fails by throwing. The exception becomes the host error that the user of the
//   sink receives (KAPClientProcs.h).
// Threads: the host calls one sink from one thread at a time.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

class CKAPFilter;

// Receives bytes.
class KAPClientDataSink : public CKAPVirtualClientBase {
 public:
  // Takes all `size` bytes, or throws.
  virtual void Write(const unsigned char* data, std::size_t size) = 0;
};

// Receives bytes, transforms them and writes the result to a target. Deliberate: the host never
// passes the target to the object. Pass it to the constructor and keep a reference; a target that
// is set later with CKAPFilter::SetDataSink does not reach it.
//
//   struct Upper : KAPClientFilter {
//     explicit Upper(CKAPDataSink target) : fTarget(std::move(target)) {}
//     void Write(const unsigned char* data, std::size_t size) override;  // to fTarget
//     ...
//     CKAPDataSink fTarget;
//   };
//   CKAPFilter upper(target, KAPNewClient<Upper>(target));
//
class KAPClientFilter : public KAPClientDataSink {
 public:
  // Writes what is still pending. The host forwards it once; after a failure it may call again.
  virtual void Close() = 0;
  // The filter that reverses this one; an empty reference when there is none.
  virtual CKAPFilter GetVellumcodeFilter() = 0;
};

// A filter that encodes images. The coder is the object's own; the parameters arrive before the
// bytes.
class KAPClientFilterJPEG : public KAPClientFilter {
 public:
  virtual void SetImageParameters(int width, int height, int channels) = 0;  // in pixels
  virtual void SetCompressionParameters(float quality) = 0;  // the object defines the range
};

}  // namespace KAP_T_MT
