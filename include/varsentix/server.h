#pragma once
// The in-process server: registration, class objects, CreateObject.
#include "varsentix/server/CreateObject.h"
#include "varsentix/server/Server.h"
