// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>
#include <iface/JsonReaderAttribute.h>
#include <iface/JsonSource.h>

#include <pps/decoder.h>

namespace zel {

/// Reads JSON out of a text that the decoder holds.
///
/// Does not own the decoder, which must outlive it and every reader on it. The root is where the decoder stands when
/// the source is made. Every operation first puts the decoder where its reader is, so readers may be used in any
/// order and interleaved, as long as one thread does it.
class ZEL_EXPORT PpsJsonSource : public iface::JsonSource
{
public:
    explicit PpsJsonSource(pps_decoder_t* decoder);
    ~PpsJsonSource() override;

    bool readInt(void* node, iface::JsonChildIdentifier child, int& value) override;
    bool readDouble(void* node, iface::JsonChildIdentifier child, double& value) override;
    bool readBool(void* node, iface::JsonChildIdentifier child, bool& value) override;
    bool readLong(void* node, iface::JsonChildIdentifier child, long& value) override;
    bool readString(void* node, iface::JsonChildIdentifier child, QString& value) override;
    int numChildren(void* node) override;
    void* push(void* node, iface::JsonChildIdentifier child, bool& ok) override;
    void* getRoot() override;
    bool visitMembers(void* node, iface::JsonMemberVisitor& visitor) override;

    /// Where the decoder stands, as a node handle.
    void* getReadPointer() const;
    /// Puts the decoder back to a node; false when the handle is none.
    bool restoreState(void* node);

private:
    bool goTo(void* node, iface::JsonChildIdentifier child);

    pps_decoder_t* const m_decoder;
    void* const m_rootPosition;
};

} // namespace zel
