// SPDX-License-Identifier: MIT
#include "TestHost.h"

namespace {

using Buffers = KAP_T_MT::KAPSharedBuffInterface;

class SharedBuffTest : public HostTest {};

TEST_F(SharedBuffTest, OwnStorage) {
  const auto newBuffer = fHost.Proc<Buffers, "NewBuffer">();
  KAPSharedBuffer* const buffer = newBuffer(1000, nullptr, nullptr, nullptr, nullptr);
  const unsigned char* const bytes = fHost.Call<Buffers, "GetBuffer">(buffer);
  EXPECT_EQ(reinterpret_cast<std::size_t>(bytes) % 16, 0u);
  EXPECT_EQ(std::string(bytes, bytes + 1000), std::string(1000, '\0'));
  EXPECT_EQ(fHost.TakeSnapshot().Describe(), "shared buffers: 1 (1000 bytes)\n");
  fHost.Call<Buffers, "AddRef">(buffer);
  fHost.Call<Buffers, "Release">(buffer);
  fHost.Call<Buffers, "DeleteUnowned">(buffer);
  EXPECT_EQ((fHost.Call<Buffers, "GetSize">(buffer)), 1000u);
  fHost.Call<Buffers, "Release">(buffer);
  EXPECT_EQ(newBuffer(~0ul, nullptr, nullptr, nullptr, nullptr), nullptr);
  int data = 0;  // a size is the caller's word, whatever it is
  KAPSharedBuffer* const huge[] = {newBuffer(~0ul, &data, nullptr, nullptr, nullptr),
                                   newBuffer(1ul << 63, &data, nullptr, nullptr, nullptr)};
  for (KAPSharedBuffer* buff : huge) {
    EXPECT_EQ((fHost.Call<Buffers, "GetBuffer">(buff)), reinterpret_cast<unsigned char*>(&data));
    fHost.Call<Buffers, "Release">(buff);
  }
  fHost.FailCall(KAP_T_MT::KAPFault::kBuffer, 1);
  EXPECT_EQ(newBuffer(1, nullptr, nullptr, nullptr, nullptr), nullptr);
}

}  // namespace
