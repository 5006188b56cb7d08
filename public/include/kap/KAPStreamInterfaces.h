#pragma once

#include "kap/KAPInterface.h"

// Streams: how the host makes them, and the methods that each offers. See KAPHostInterfaces.h for
// the conventions.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Where the offset of a seek counts from.
enum KAPSeekOrigin : int { kKAPSeekFromStart = 0, kKAPSeekFromPosition = 1, kKAPSeekFromEnd = 2 };

// What a component hands over together with a stream object of its own, `client`. Each gives null
// or a new error reference; a result place is then 0 or null. Read: 0 bytes mean the end of the
// input. Write takes all bytes or fails. An error from Delete is reported by the host. Create...: a
// new client object, for which the host makes a stream with the same procedures.
using KAPClientReadProc = KAPError* (*)(std::size_t* outCount, void* client, unsigned char* buffer,
                                        std::size_t count);
using KAPClientWriteProc = KAPError* (*)(void* client, const unsigned char* buffer,
                                         std::size_t count);
using KAPClientDeleteProc = KAPError* (*)(void* client);
using KAPClientCreateStreamProc = KAPError* (*)(void** outClient, void* client);
using KAPClientRewindProc = KAPError* (*)(void* client);
using KAPClientMarkProc = KAPError* (*)(long* outPosition, void* client);
using KAPClientSeekProc = KAPError* (*)(void* client, long offset, int origin);

struct KAPStreamFactoryInterface
    : TKAPInterface<
          "KAPStreamFactoryInterface",
          TKAPMethod<"NewPositionableMemoryStream", "KAPNewPositionableMemoryStreamProc",
                     KAPError*(KAPPositionableStream** out)>,
          // Read-only, over a copy of the bytes.
          TKAPMethod<"NewPositionableBufferStream", "KAPNewPositionableBufferStreamProc",
                     KAPError*(KAPPositionableStream** out, const unsigned char* data,
                               std::size_t size)>,
          // The modes are those of fopen.
          TKAPMethod<"NewPositionableFileStream", "KAPNewPositionableFileStreamProc",
                     KAPError*(KAPPositionableStream** out, const char* path, const char* mode)>,
          // On an error the client object stays the caller's.
          TKAPMethod<"NewClientSimpleStream", "KAPNewClientSimpleStreamProc",
                     KAPError*(KAPSimpleStream** out, void* client, KAPClientReadProc read,
                               KAPClientWriteProc write, KAPClientDeleteProc deleteClient)>,
          TKAPMethod<"NewClientRewindableStream", "KAPNewClientRewindableStreamProc",
                     KAPError*(KAPRewindableStream** out, void* client, KAPClientReadProc read,
                               KAPClientWriteProc write, KAPClientDeleteProc deleteClient,
                               KAPClientCreateStreamProc createIndependentlyRewindableStream,
                               KAPClientRewindProc rewind)>,
          TKAPMethod<"NewClientPositionableStream", "KAPNewClientPositionableStreamProc",
                     KAPError*(KAPPositionableStream** out, void* client, KAPClientReadProc read,
                               KAPClientWriteProc write, KAPClientDeleteProc deleteClient,
                               KAPClientCreateStreamProc createIndependentlyRewindableStream,
                               KAPClientRewindProc rewind,
                               KAPClientCreateStreamProc createIndependentlyPositionableStream,
                               KAPClientMarkProc mark, KAPClientSeekProc seek)>> {};

// ---- The methods of a stream, by what it can do. They are looked up through its container. ----

struct KAPSimpleStreamInterface
    : TKAPInterface<"KAPSimpleStreamInterface",
                    TKAPMethod<"Read", "KAPSimpleStreamReadProc",
                               KAPError*(std::size_t* outCount, KAPSimpleStream* stream,
                                         unsigned char* buffer, std::size_t count)>,
                    TKAPMethod<"Write", "KAPSimpleStreamWriteProc",
                               KAPError*(KAPSimpleStream* stream, const unsigned char* buffer,
                                         std::size_t count)>> {};

struct KAPRewindableStreamInterface
    : TKAPInterface<"KAPRewindableStreamInterface",
                    TKAPMethod<"CreateIndependentlyRewindableStream",
                               "KAPRewindableStreamCreateIndependentlyRewindableStreamProc",
                               KAPError*(KAPRewindableStream** out, KAPRewindableStream* stream)>,
                    TKAPMethod<"Rewind", "KAPRewindableStreamRewindProc",
                               KAPError*(KAPRewindableStream* stream)>> {};

struct KAPPositionableStreamInterface
    : TKAPInterface<
          "KAPPositionableStreamInterface",
          TKAPMethod<"CreateIndependentlyPositionableStream",
                     "KAPPositionableStreamCreateIndependentlyPositionableStreamProc",
                     KAPError*(KAPPositionableStream** out, KAPPositionableStream* stream)>,
          TKAPMethod<"Mark", "KAPPositionableStreamMarkProc",
                     KAPError*(long* outPosition, KAPPositionableStream* stream)>,
          TKAPMethod<"Seek", "KAPPositionableStreamSeekProc",
                     KAPError*(KAPPositionableStream* stream, long offset, int origin)>> {};

struct KAPDataStoreInterface
    : TKAPInterface<
          "KAPDataStoreInterface",
          TKAPMethod<"GetBlock", "KAPDataStoreGetBlockProcV2",
                     KAPError*(KAPDataBlock* out, KAPDataStore* store, std::size_t offset)>> {};

struct KAPSizedDataStoreInterface
    : TKAPInterface<"KAPSizedDataStoreInterface",
                    TKAPMethod<"GetSize", "KAPSizedDataStoreGetSizeProc",
                               KAPError*(std::size_t* out, KAPDataStore* store)>> {};

struct KAPDataBlockStreamInterface
    : TKAPInterface<"KAPDataBlockStreamInterface",
                    TKAPMethod<"GetNextBlock", "KAPDataBlockStreamGetNextBlockProc",
                               KAPError*(KAPDataBlock* out, KAPDataBlockStream* stream)>,
                    TKAPMethod<"Rewind", "KAPDataBlockStreamRewindProc",
                               KAPError*(KAPDataBlockStream* stream)>> {};

}  // namespace KAP_T_MT
