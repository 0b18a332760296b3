// SPDX-License-Identifier: Apache-2.0
#pragma once

extern "C" {

typedef struct pps_encoder
{
    void* platform;
} pps_encoder_t;

typedef enum { PPS_ENCODER_OK = 0 } pps_encoder_error_t;

void pps_encoder_initialize(pps_encoder_t* encoder, bool encodeJson);
void pps_encoder_cleanup(pps_encoder_t* encoder);
pps_encoder_error_t pps_encoder_start_object(pps_encoder_t* encoder, const char* name);
pps_encoder_error_t pps_encoder_end_object(pps_encoder_t* encoder);
pps_encoder_error_t pps_encoder_start_array(pps_encoder_t* encoder, const char* name);
pps_encoder_error_t pps_encoder_end_array(pps_encoder_t* encoder);
pps_encoder_error_t pps_encoder_add_null(pps_encoder_t* encoder, const char* name);
pps_encoder_error_t pps_encoder_add_bool(pps_encoder_t* encoder, const char* name, bool value);
pps_encoder_error_t pps_encoder_add_int(pps_encoder_t* encoder, const char* name, int value);
pps_encoder_error_t pps_encoder_add_string(pps_encoder_t* encoder, const char* name, const char* value);
pps_encoder_error_t pps_encoder_add_json(pps_encoder_t* encoder, const char* name, const char* json);
const char* pps_encoder_buffer(const pps_encoder_t* encoder);
int pps_encoder_length(const pps_encoder_t* encoder);
}
