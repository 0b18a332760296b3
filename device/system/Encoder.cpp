// SPDX-License-Identifier: Apache-2.0
#include <device/Encoder.h>

// The platform's encoder takes texts up to their NUL.
namespace device {

void Encoder::startObject(Text name)
{
    pps_encoder_start_object(&m_encoder, name.data);
}

void Encoder::startArray(Text name)
{
    pps_encoder_start_array(&m_encoder, name.data);
}

void Encoder::addNull(Text name)
{
    pps_encoder_add_null(&m_encoder, name.data);
}

void Encoder::addBool(Text name, bool value)
{
    pps_encoder_add_bool(&m_encoder, name.data, value);
}

void Encoder::addInt(Text name, int value)
{
    pps_encoder_add_int(&m_encoder, name.data, value);
}

void Encoder::addString(Text name, Text value)
{
    pps_encoder_add_string(&m_encoder, name.data, value.data);
}

void Encoder::addJson(Text name, Text json)
{
    pps_encoder_add_json(&m_encoder, name.data, json.data);
}

} // namespace device
