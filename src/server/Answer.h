#pragma once

#include <exception>
#include <utility>

#include "server/error_reply.h"
#include "server/protocol/QVE_Message.h"
#include "server/protocol/QVE_OutputIterator.h"

namespace qve::Server {

/// Runs the body of a handler, which writes the fields of a good reply. An exception makes an error reply instead, and
/// `failed` logs it.
template <class Body, class Failed>
void Answer(QVE_Message& reply, Body body, Failed failed) {
    try {
        QVE_OutputIterator out(reply);
        out.WriteHeader();
        out.WriteStatus(0);
        body(out);
    } catch (const std::exception& exception) {
        MakeErrorReply(exception, reply);
        failed(exception.what());
    }
}

template <class Body>
void Answer(QVE_Message& reply, Body body) {
    Answer(reply, std::move(body), [](const char*) {});
}

}  // namespace qve::Server
