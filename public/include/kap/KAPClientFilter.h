#pragma once

#include <cstddef>

#include "kap/KAPClientBase.h"

// Bases of the sinks and filters that a component implements itself and hands to the host; see
// KAPFilter.h. An operation fails by raising: the exception becomes the host error that the sink's
// user gets. Threads: the host calls one sink from one thread at a time.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

class CKAPFilter;

class KAPClientDataSink : public CKAPVirtualClientBase {
 public:
  // Takes all of the bytes.
  virtual void Write(const unsigned char* data, std::size_t size) = 0;
};

class KAPClientFilter : public KAPClientDataSink {
 public:
  virtual void Close() = 0;
  // Empty when there is none.
  virtual CKAPFilter GetVellumcodeFilter() = 0;
};

class KAPClientFilterJPEG : public KAPClientFilter {
 public:
  virtual void SetImageParameters(int width, int height, int channels) = 0;
  virtual void SetCompressionParameters(float quality) = 0;
};

}  // namespace KAP_T_MT
