// SPDX-License-Identifier: MIT
#pragma once

// The reference host: a complete binder with strings, errors, memory, containers, streams, shared
// buffers, caches, filters and progress. Programs and tests embed it.
//
//   KAPHost::Host host;
//   KAPHost::Component utils = host.Load("libKAPUtils.so");
//   auto newAtom = host.Proc<KAP_T_MT::KAPStringInterface, "NewStringAtom">();
//   ...
//   for (const std::string& message : host.TakeReports()) std::cerr << message << '\n';
//
// Host.h        the host: registry, components, reports, accounting, fault injection, stream log
// Component.h   a loaded component
// Debug.h       trace, stacks and the list of leaks
// Declared.h    the interfaces of components that the trace shows
// Live.h        a thing that components hold, and where it comes from
// Snapshot.h    what components hold at one moment, and the difference between two
// StreamCall.h  a logged call of a stream's method

#include "kaphost/Component.h"
#include "kaphost/Debug.h"
#include "kaphost/Declared.h"
#include "kaphost/Host.h"
#include "kaphost/Live.h"
#include "kaphost/Snapshot.h"
#include "kaphost/StreamCall.h"
