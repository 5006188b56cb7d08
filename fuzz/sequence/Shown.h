// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

#include "kap/KAPTypes.h"
#include "sequence/Model.h"

// What values hold as text: the text notation, as far as there is one.

// What raw pointers point to, and the only unit in Unicode strings.
extern int gPointee;
constexpr unsigned short kUnit = 0x20AC;

// The text of a scalar.
std::string NumberText(double value);
std::string Quoted(const std::string& text);
std::string UnitsText(std::size_t count);
std::string BytesText(const std::string& typeName, const std::string& bytes);
constexpr const char kPointerText[] = "* ";

std::string Show(const ModelRef& model);

// Returns whether the object is what the model says.
bool AreSame(POSObject* object, const ModelRef& model);

// Whether the value has a form in documents, and in text notation.
bool HasDocument(const ModelRef& model);
bool HasText(const ModelRef& model);
