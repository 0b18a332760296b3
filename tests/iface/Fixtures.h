// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Containers.h"

#include <common/SeededRandom.h>
#include <common/TestMain.h>

#include <iface/CachedObservableList.h>
#include <iface/FilteredObservableList.h>
#include <iface/ListMirror.h>
#include <iface/ObservableTracker.h>
#include <iface/ObserverFunctorAdapter.h>
#include <iface/TransformedObservableList.h>

#include <QtCore/QPointer>
#include <QtTest>

#include <memory>
#include <vector>

using namespace Qt::StringLiterals;
