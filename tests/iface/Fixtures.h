// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Containers.h"

#include <common/Random.h>
#include <common/TestMain.h>

#include <iface/ObserverFunctorAdapter.h>

#include <QtTest>

using namespace iface;
