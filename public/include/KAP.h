#pragma once

// The client runtime of the binder: everything that a component needs to bind itself to a host, use
// the host's services and register its own. Begin with kap/KAPBinder.h.
//
// The namespace is hidden in all headers, so that every component has tables of its own, whatever
// flags it is compiled with.

#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"
#include "kap/KAPCache.h"
#include "kap/KAPCacheInterface.h"
#include "kap/KAPClient.h"
#include "kap/KAPClientBase.h"
#include "kap/KAPClientFilter.h"
#include "kap/KAPClientProcs.h"
#include "kap/KAPClientStream.h"
#include "kap/KAPContainer.h"
#include "kap/KAPDataBlock.h"
#include "kap/KAPDataStore.h"
#include "kap/KAPError.h"
#include "kap/KAPFilter.h"
#include "kap/KAPFilterInterface.h"
#include "kap/KAPHostInterfaces.h"
#include "kap/KAPInterface.h"
#include "kap/KAPInterfaceClient.h"
#include "kap/KAPMemory.h"
#include "kap/KAPMethodTable.h"
#include "kap/KAPProcTable.h"
#include "kap/KAPProgress.h"
#include "kap/KAPProgressInterface.h"
#include "kap/KAPReference.h"
#include "kap/KAPSharedBuff.h"
#include "kap/KAPSharedBuffInterface.h"
#include "kap/KAPStaticCache.h"
#include "kap/KAPStream.h"
#include "kap/KAPStreamFactory.h"
#include "kap/KAPStreamInterfaces.h"
#include "kap/KAPStringAtom.h"
#include "kap/KAPTypes.h"
#include "kap/LazyTerminate.h"
#include "kap/TOQException.h"
#include "kap/TOQWaitMutex.h"
