// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/RecordJsonAdapter.h>
#include <splib/globals/GlobalVar.h>

namespace zelsplib {

/// Converts the elements of the "global" list. Of an own profile with marked fields only those are written: a change of
/// one field must blank no other.
class GlobalVarsJsonAdapter : public RecordJsonAdapter<GlobalVar, &GlobalVar::name>
{
public:
    GlobalVarsJsonAdapter()
        : RecordJsonAdapter("name")
    {
    }

private:
    void load(GlobalVar& element, const iface::JsonObjectReader& json) const override;
    void writeMembers(const GlobalVar& element, zel::JsonWriter& object) const override;
};

} // namespace zelsplib
