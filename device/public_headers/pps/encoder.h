// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/*
 * Writes a text of attribute lines, name:encoding:value, or plain JSON, into one growing buffer.
 *
 * Ownership: an encoder is allocated by the caller, made usable by pps_encoder_initialize() and emptied by
 * pps_encoder_cleanup(); the text it hands out lives until the next call that writes, or until the clean-up. An
 * encoder that is all zeroes counts as one that was cleaned up: every call on it fails and none is harmful.
 * Threads: any one thread at a time.
 *
 * Attribute mode (encodeJson false). A value at the top level is one line: strings have the empty encoding, with
 * backslash, line feed, carriage return and NUL written as \\ \n \r \0; booleans have "b", numbers "n"; null,
 * objects, arrays and ready-made JSON have "json". Everything below a top-level object or array is JSON.
 * JSON mode (encodeJson true). The text is one JSON value.
 *
 * JSON has no white space; quotation mark, backslash and control characters are escaped, and bytes that are not
 * UTF-8 become U+FFFD. Members appear in the order of the calls and are never compared or merged.
 *
 * Names and strings are ended by a NUL. A name of NULL is no name.
 *
 * Misuse is answered with an error and never harms the text's form. The calls that write a value write it even then,
 * so that starts and ends stay balanced for a caller who does not look at errors: a name in an array, or on the only
 * value of a JSON text, is left out (PPS_ENCODER_NAME_NOT_ALLOWED); a member without a name gets an empty one
 * (PPS_ENCODER_NAME_MISSING). What has no place at all is dropped: see the other errors.
 */
typedef struct pps_encoder
{
    struct pps_encoder_private* d;
} pps_encoder_t;

typedef enum {
    PPS_ENCODER_OK = 0,
    PPS_ENCODER_NAME_NOT_ALLOWED, /* written, without the name */
    PPS_ENCODER_NAME_MISSING,     /* written, under an empty name */
    PPS_ENCODER_BAD_NAME,         /* an attribute's name that the text form cannot carry: written with '_' for each
                                     character that is not allowed (control characters, ':', and a leading '@') */
    PPS_ENCODER_BAD_VALUE,        /* a string of NULL: written as null */
    PPS_ENCODER_UNBALANCED,       /* an end without its start: dropped */
    PPS_ENCODER_COMPLETE,  /* a second value after the only one of a JSON text: dropped, with all that is in it */
    PPS_ENCODER_NO_MEMORY, /* dropped, as is everything after it; the text is empty from then on */
    PPS_ENCODER_NOT_INITIALIZED
} pps_encoder_error_t;

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

/*
 * Adds a value that is JSON already. It is taken as it is: that it is one valid value is the caller's promise. Only
 * line breaks are turned into blanks, because a line of the attribute form ends at the first one, and in JSON they
 * mean nothing. An empty text at the top level leaves the attribute's value empty.
 */
pps_encoder_error_t pps_encoder_add_json(pps_encoder_t* encoder, const char* name, const char* json);

/* The text so far, ended by a NUL that does not count; with nodes still open it is the beginning of one. Never NULL. */
const char* pps_encoder_buffer(const pps_encoder_t* encoder);
int pps_encoder_length(const pps_encoder_t* encoder);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
