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

#include <algorithm>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

/// What a list announced, in the words of a ListMirror, taken apart.
struct Announced
{
    explicit Announced(const QString& words)
        : what(words.section(u' ', 0, 0))
    {
        const QStringList numbers = words.section(u' ', 1).split(u' ', Qt::SkipEmptyParts);
        for (const QString& number : numbers) {
            if (what != "data"_L1) // changed
                indexes.append(number.toInt());
        }
    }

    bool isWholesale() const { return what == "moved"_L1 || what == "data"_L1 || what == "reset"_L1; }

    QString what; ///< "added", "updated", "removed", "moved", "data" or "reset"
    QList<int> indexes;
};
