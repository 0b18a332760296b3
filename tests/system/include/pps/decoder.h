// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

extern "C" {

typedef struct pps_decoder
{
    void* platform;
} pps_decoder_t;

typedef struct pps_decoder_state
{
    uintptr_t position;
} pps_decoder_state_t;

typedef enum { PPS_DECODER_OK = 0 } pps_decoder_error_t;

pps_decoder_error_t pps_decoder_initialize(pps_decoder_t* decoder, const char* text);
void pps_decoder_cleanup(pps_decoder_t* decoder);
pps_decoder_error_t pps_decoder_push(pps_decoder_t* decoder, const char* name);
pps_decoder_error_t pps_decoder_get_state(const pps_decoder_t* decoder, pps_decoder_state_t* state);
pps_decoder_error_t pps_decoder_set_state(pps_decoder_t* decoder, const pps_decoder_state_t* state);
int pps_decoder_length(pps_decoder_t* decoder);
pps_decoder_error_t pps_decoder_goto_index(pps_decoder_t* decoder, int index);
const char* pps_decoder_name(pps_decoder_t* decoder);
pps_decoder_error_t pps_decoder_get_int(pps_decoder_t* decoder, const char* name, int* value);
pps_decoder_error_t pps_decoder_get_double(pps_decoder_t* decoder, const char* name, double* value);
pps_decoder_error_t pps_decoder_get_bool(pps_decoder_t* decoder, const char* name, bool* value);
pps_decoder_error_t pps_decoder_get_string(pps_decoder_t* decoder, const char* name, const char** value);
}
