#pragma once
// What Windows and Visual Basic used to provide.
#include "varsentix/platform/ui/Hooks.h"
#include "varsentix/platform/vb/Collection.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/Ref.h"
#include "varsentix/platform/vb/ResumeNext.h"
#include "varsentix/platform/vb/VBError.h"
#include "varsentix/platform/vb/Variant.h"
#include "varsentix/platform/registry/Registry.h"
#include "varsentix/platform/ado.h"
