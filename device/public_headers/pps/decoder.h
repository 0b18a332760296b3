// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/*
 * Reads a text of objects and attributes: lines "@object", each followed by its attribute lines name:encoding:value.
 * Encodings: empty (a string, with \\ \n \r \0 for backslash, line feed, carriage return and NUL), "json", "n"
 * (number), "b" (true or false), "b64" (a string of any bytes). An attribute of another encoding is there, but its
 * value cannot be read. Empty lines, CR LF and a missing last line break are taken. Attributes before the first
 * object belong to the root.
 *
 * No text is harmful, and what cannot be read in one costs that piece and nothing else. An attribute with broken JSON,
 * nesting beyond 1024 levels or bytes that are not UTF-8, and a line of another form, are as if they were not there. An
 * object whose name is not UTF-8 has none. A number beyond a double's range is null, and a whole one beyond 64 bits is
 * only a double. An unpaired surrogate escape in a JSON string reads as U+FFFD.
 *
 * Ownership: a decoder is allocated by the caller, made usable by pps_decoder_initialize(), whatever that answers, and
 * emptied by pps_decoder_cleanup(). It copies the text. Names and strings it hands out live until the clean-up. A
 * decoder that is all zeroes counts as one that was cleaned up: every call on it fails and none is harmful.
 * Threads: any one thread at a time, the clean-up included. Decoders are independent of each other: any number may be
 * in use at once.
 *
 * Reading. At any time the decoder stands in one container, first in the root, and has one current element in it,
 * first its first. What is asked for by name is looked up among the container's members and leaves the current element
 * as it is; with a name of NULL the current element is meant. Of members with the same name the first one counts.
 * Asking for the members of a JSON object, or going to the elements of an array, in the text's order costs no more than
 * walking through them.
 */
typedef struct pps_decoder
{
    struct pps_decoder_private* d;
} pps_decoder_t;

typedef enum {
    PPS_DECODER_OK = 0,
    PPS_DECODER_NOT_FOUND,    /* no such member or element */
    PPS_DECODER_BAD_TYPE,     /* the value is of another type */
    PPS_DECODER_OUT_OF_RANGE, /* the whole number does not fit */
    PPS_DECODER_BAD_STATE,    /* no position in this text */
    PPS_DECODER_NO_MEMORY,
    PPS_DECODER_NOT_INITIALIZED
} pps_decoder_error_t;

/*
 * Where a decoder stands: the container, not the current element in it. Valid for this decoder until its clean-up; a
 * valid position is never 0, and equal positions are the same container. Saving and restoring cost a few
 * instructions, whatever lies in between.
 */
typedef struct pps_decoder_state
{
    uintptr_t position;
} pps_decoder_state_t;

/* Fails for want of memory only; every later call fails then. */
pps_decoder_error_t pps_decoder_initialize(pps_decoder_t* decoder, const char* text);
void pps_decoder_cleanup(pps_decoder_t* decoder);

/* Enters a member, or the current element; it must be an object or an array. Its first element becomes current. */
pps_decoder_error_t pps_decoder_push(pps_decoder_t* decoder, const char* name);

pps_decoder_error_t pps_decoder_get_state(const pps_decoder_t* decoder, pps_decoder_state_t* state);
/* The container's first element becomes current. */
pps_decoder_error_t pps_decoder_set_state(pps_decoder_t* decoder, const pps_decoder_state_t* state);

/* Members or elements of the container; 0 when there is none. */
int pps_decoder_length(pps_decoder_t* decoder);
/* Makes the element of this index current. On failure the current element stays. */
pps_decoder_error_t pps_decoder_goto_index(pps_decoder_t* decoder, int index);
/* The current element's name, ended by a NUL; NULL when it has none. */
const char* pps_decoder_name(pps_decoder_t* decoder);

/* The values. An out-argument is written only on success. Only a number written without fraction and exponent is
 * whole; a double takes any number. */
pps_decoder_error_t pps_decoder_get_int(pps_decoder_t* decoder, const char* name, int* value);
pps_decoder_error_t pps_decoder_get_double(pps_decoder_t* decoder, const char* name, double* value);
pps_decoder_error_t pps_decoder_get_bool(pps_decoder_t* decoder, const char* name, bool* value);
/* Strings are UTF-8 (b64: any bytes) and ended by a NUL. */
pps_decoder_error_t pps_decoder_get_string(pps_decoder_t* decoder, const char* name, const char** value);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
