// SPDX-License-Identifier: Apache-2.0
#include <zel/PpsJsonSource.h>

#include <iface/JsonMember.h>

#include <device/Decoder.h>

namespace zel {

namespace {

iface::JsonMember memberOf(const device::Member& shown)
{
    switch (shown.type) {
    case device::Member::Text:
        return iface::JsonMember::ofText(shown.name, shown.text);
    case device::Member::Integer:
        return iface::JsonMember::ofInteger(shown.name, shown.number);
    case device::Member::Bool:
        return iface::JsonMember::ofBool(shown.name, shown.number != 0);
    case device::Member::Another:
        break;
    }
    return iface::JsonMember::ofAnother(shown.name);
}

} // namespace

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
    if (!readInt(node, child, number))
        return false;
    value = number;
    return true;
}

bool PpsJsonSource::readString(void* node, iface::JsonChildIdentifier child, QString& value)
{
    std::string_view text;
    return goTo(node, child) && device::readString(m_decoder, child.name, &text) &&
           iface::JsonMember::ofText({}, text).read(value);
}

bool PpsJsonSource::visitMembers(void* node, iface::JsonMemberVisitor& visitor)
{
    const auto show = [](void* context, const device::Member& shown) {
        static_cast<iface::JsonMemberVisitor*>(context)->member(memberOf(shown));
    };
    return restoreState(node) && device::visitMembers(m_decoder, show, &visitor);
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
