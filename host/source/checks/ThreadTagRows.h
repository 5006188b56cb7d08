// SPDX-License-Identifier: MIT
#pragma once

// Made by scripts/make_thread_tags from the public headers.

#include "checks/ThreadTag.h"

namespace KAPHost {

// Sorted, without the methods of any thread.
inline constexpr ThreadTagRow kThreadTagRows[] = {
    {"KAPCacheInterface", "AddClientPurge", ThreadTag::kBinding},
    {"KAPCacheInterface", "DeleteCachePurge", ThreadTag::kExclusive},
    {"KAPCacheInterface", "PurgeAllStaticCaches", ThreadTag::kBinding},
    {"KAPCacheInterface", "PurgeNextBlock", ThreadTag::kExclusive},
    {"KAPCacheInterface", "RemoveClientPurge", ThreadTag::kBinding},
    {"KAPContainerInterface", "RegisterInstance", ThreadTag::kExclusive},
    {"KAPContainerInterface", "RegisterInterface", ThreadTag::kExclusive},
    {"KAPDataBlockStreamInterface", "GetNextBlock", ThreadTag::kExclusive},
    {"KAPDataBlockStreamInterface", "Rewind", ThreadTag::kExclusive},
    {"KAPDataStoreInterface", "GetBlock", ThreadTag::kExclusive},
    {"KAPFilterInterface", "Close", ThreadTag::kExclusive},
    {"KAPFilterInterface", "GetChainState", ThreadTag::kSharedRead},
    {"KAPFilterInterface", "GetVellumcodeFilter", ThreadTag::kExclusive},
    {"KAPFilterInterface", "PeekTarget", ThreadTag::kSharedRead},
    {"KAPFilterInterface", "ResetChainState", ThreadTag::kExclusive},
    {"KAPFilterInterface", "SetCompressionParameters", ThreadTag::kExclusive},
    {"KAPFilterInterface", "SetDataSink", ThreadTag::kExclusive},
    {"KAPFilterInterface", "SetImageParameters", ThreadTag::kExclusive},
    {"KAPFilterInterface", "Write", ThreadTag::kExclusive},
    {"KAPMemoryInterface", "Realloc", ThreadTag::kExclusive},
    {"KAPPositionableStreamInterface", "CreateIndependentlyPositionableStream",
     ThreadTag::kExclusive},
    {"KAPPositionableStreamInterface", "Mark", ThreadTag::kExclusive},
    {"KAPPositionableStreamInterface", "Seek", ThreadTag::kExclusive},
    {"KAPProgressInterface", "Update", ThreadTag::kExclusive},
    {"KAPRewindableStreamInterface", "CreateIndependentlyRewindableStream", ThreadTag::kExclusive},
    {"KAPRewindableStreamInterface", "Rewind", ThreadTag::kExclusive},
    {"KAPSimpleStreamInterface", "Read", ThreadTag::kExclusive},
    {"KAPSimpleStreamInterface", "Write", ThreadTag::kExclusive},
    {"KAPSizedDataStoreInterface", "GetSize", ThreadTag::kExclusive},
    {"POSArrayInterface", "Append", ThreadTag::kExclusive},
    {"POSArrayInterface", "Count", ThreadTag::kSharedRead},
    {"POSArrayInterface", "GetAt", ThreadTag::kSharedRead},
    {"POSArrayInterface", "Remove", ThreadTag::kExclusive},
    {"POSArrayInterface", "SetAt", ThreadTag::kExclusive},
    {"POSDictInterface", "DeepGet", ThreadTag::kSharedRead},
    {"POSDictInterface", "Get", ThreadTag::kSharedRead},
    {"POSDictInterface", "Put", ThreadTag::kExclusive},
    {"POSDictInterface", "Remove", ThreadTag::kExclusive},
    {"POSDictIteratorInterface", "Begin", ThreadTag::kExclusive},
    {"POSDictIteratorInterface", "CurKey", ThreadTag::kSharedRead},
    {"POSDictIteratorInterface", "IsDone", ThreadTag::kSharedRead},
    {"POSDictIteratorInterface", "NewPOSDictIterator", ThreadTag::kSharedRead},
    {"POSDictIteratorInterface", "Next", ThreadTag::kExclusive},
    {"POSObjectInterface", "Clone", ThreadTag::kSharedRead},
    {"POSObjectInterface", "IsEqual", ThreadTag::kSharedRead},
    {"POSStreamerInterface", "Serialize", ThreadTag::kSharedRead},
    {"POSStructValidatorInterface", "RegisterCallbackProc", ThreadTag::kExclusive},
    {"POSStructValidatorInterface", "ValidateSchema", ThreadTag::kSharedRead},
    {"POSValidatorInterface", "Validate", ThreadTag::kSharedRead},
};

}  // namespace KAPHost
