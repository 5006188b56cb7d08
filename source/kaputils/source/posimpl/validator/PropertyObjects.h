#pragma once

#include "posimpl/base/AtomText.h"
#include "posimpl/objects/Array.h"
#include "posimpl/objects/BinData.h"
#include "posimpl/objects/Dict.h"
#include "posimpl/objects/Number.h"
#include "posimpl/objects/RawPointer.h"
#include "posimpl/objects/String.h"
#include "posimpl/objects/UnicodeString.h"

// The property objects that are validated and that schemas are made of. Their classes are used
// directly: reading a value takes no call across the boundary, and no reference.

namespace NPOSValidatorImpl {

using NPOSObjectImpl::Array;
using NPOSObjectImpl::AtomText;
using NPOSObjectImpl::BaseObject;
using NPOSObjectImpl::BinData;
using NPOSObjectImpl::CPOSObject;
using NPOSObjectImpl::Dict;
using NPOSObjectImpl::DictEntry;
using NPOSObjectImpl::DictTree;
using NPOSObjectImpl::Number;
using NPOSObjectImpl::POSException;
using NPOSObjectImpl::RawPointer;
using NPOSObjectImpl::SortableStringAtom;
using NPOSObjectImpl::SortableText;
using NPOSObjectImpl::String;
using NPOSObjectImpl::TextPrefix;
using NPOSObjectImpl::UnicodeString;

}  // namespace NPOSValidatorImpl
