// SPDX-License-Identifier: Apache-2.0
#include <zel/PpsJsonSource.h>

#include <iface/JsonMember.h>

namespace zel {

PpsJsonSource::PpsJsonSource(pps_decoder_t* decoder)
    : m_decoder(decoder)
    , m_rootPosition(getReadPointer())
{
}

PpsJsonSource::~PpsJsonSource() = default;

void* PpsJsonSource::getReadPointer() const
{
    pps_decoder_state_t state = {};
    pps_decoder_get_state(m_decoder, &state);
    return reinterpret_cast<void*>(state.position);
}

bool PpsJsonSource::restoreState(void* node)
{
    const pps_decoder_state_t state = {reinterpret_cast<uintptr_t>(node)};
    return pps_decoder_set_state(m_decoder, &state) == PPS_DECODER_OK;
}

/// Puts the decoder where the child can be read under its name, or without one when it is meant by its place.
bool PpsJsonSource::goTo(void* node, iface::JsonChildIdentifier child)
{
    return restoreState(node) && (child.name || pps_decoder_goto_index(m_decoder, child.index) == PPS_DECODER_OK);
}

bool PpsJsonSource::readInt(void* node, iface::JsonChildIdentifier child, int& value)
{
    return goTo(node, child) && pps_decoder_get_int(m_decoder, child.name, &value) == PPS_DECODER_OK;
}

bool PpsJsonSource::readDouble(void* node, iface::JsonChildIdentifier child, double& value)
{
    return goTo(node, child) && pps_decoder_get_double(m_decoder, child.name, &value) == PPS_DECODER_OK;
}

bool PpsJsonSource::readBool(void* node, iface::JsonChildIdentifier child, bool& value)
{
    return goTo(node, child) && pps_decoder_get_bool(m_decoder, child.name, &value) == PPS_DECODER_OK;
}

bool PpsJsonSource::readLong(void* node, iface::JsonChildIdentifier child, long& value)
{
    int number = 0;
    if (!readInt(node, child, number)) {
        return false;
    }
    value = number;
    return true;
}

bool PpsJsonSource::readString(void* node, iface::JsonChildIdentifier child, QString& value)
{
    const char* text = nullptr;
    size_t size = 0;
    if (!goTo(node, child) || pps_decoder_get_string_n(m_decoder, child.name, &text, &size) != PPS_DECODER_OK) {
        return false;
    }
    return iface::JsonMember::ofText({}, {text, size}).read(value);
}

bool PpsJsonSource::visitMembers(void* node, iface::JsonMemberVisitor& visitor)
{
    const auto show = [](void* context, const pps_decoder_member_t* shown) {
        const std::string_view name(shown->name, shown->name_length);
        auto& visiting = *static_cast<iface::JsonMemberVisitor*>(context);
        if (shown->type == PPS_TYPE_STRING)
            visiting.member(iface::JsonMember::ofText(name, {shown->text, shown->length}));
        else if (shown->is_whole)
            visiting.member(iface::JsonMember::ofInteger(name, shown->integer));
        else if (shown->type == PPS_TYPE_BOOL)
            visiting.member(iface::JsonMember::ofBool(name, shown->boolean));
        else
            visiting.member(iface::JsonMember::ofAnother(name));
    };
    return restoreState(node) && pps_decoder_visit(m_decoder, show, &visitor) == PPS_DECODER_OK;
}

int PpsJsonSource::numChildren(void* node)
{
    return restoreState(node) ? pps_decoder_length(m_decoder) : 0;
}

void* PpsJsonSource::push(void* node, iface::JsonChildIdentifier child, bool& ok)
{
    ok = goTo(node, child) && pps_decoder_push(m_decoder, child.name) == PPS_DECODER_OK;
    return ok ? getReadPointer() : nullptr;
}

void* PpsJsonSource::getRoot()
{
    return m_rootPosition;
}

} // namespace zel
