// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace zelctl {

class Arguments;
class Record;
class Session;
struct Answer;

// What the commands do: each asks the public objects, once.

Answer state(Session& session, const Arguments& arguments);
Answer permissions(Session& session, const Arguments& arguments);
Answer profile(Session& session, const Arguments& arguments);
Answer contacts(Session& session, const Arguments& arguments);
Answer contact(Session& session, const Arguments& arguments);
Answer box(Session& session, const Arguments& arguments);
Answer registerApplication(Session& session, const Arguments& arguments);
Answer setMessage(Session& session, const Arguments& arguments);
Answer setStatus(Session& session, const Arguments& arguments);
Answer setPicture(Session& session, const Arguments& arguments);
Answer contactPicture(Session& session, const Arguments& arguments);
Answer boxAdd(Session& session, const Arguments& arguments);
Answer boxRemove(Session& session, const Arguments& arguments);
Answer boxClear(Session& session, const Arguments& arguments);
Answer iconRegister(Session& session, const Arguments& arguments);
Answer iconGet(Session& session, const Arguments& arguments);
Answer ecoId(Session& session, const Arguments& arguments);
Answer ecoStatus(Session& session, const Arguments& arguments);
Answer invite(Session& session, const Arguments& arguments);
Answer chat(Session& session, const Arguments& arguments);

// Whether what is asked for is there already: the service announces changes, and there would be none.

bool messageIsSet(Session& session, const Arguments& arguments);
bool statusIsSet(Session& session, const Arguments& arguments);
bool pictureIsSet(Session& session, const Arguments& arguments);
bool boxIsEmpty(Session& session, const Arguments& arguments);

/// The state of the library as `state` answers it, and as the shell begins.
Record stateRecord(Session& session);

} // namespace zelctl
