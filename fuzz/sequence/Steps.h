// SPDX-License-Identifier: MIT
#pragma once

#include "sequence/Driver.h"

// The steps of a sequence. Each does nothing where the objects that it chooses do not fit.

// Single objects.
void Make(Driver& driver);
void Drop(Driver& driver);

// Containers and their parts.
void Append(Driver& driver);
void SetAt(Driver& driver);
void RemoveAt(Driver& driver);
void Put(Driver& driver);
void RemoveKey(Driver& driver);
void GetAt(Driver& driver);
void DeepGet(Driver& driver);

// Values with all their parts.
void Clone(Driver& driver);
void Compare(Driver& driver);
void AsText(Driver& driver);
void AsDocument(Driver& driver);
void ValidateOrMisuse(Driver& driver);
