#pragma once

#include "Array.h"
#include "AtomText.h"
#include "BinData.h"
#include "Dict.h"
#include "Number.h"
#include "RawPointer.h"
#include "String.h"
#include "UnicodeString.h"

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
