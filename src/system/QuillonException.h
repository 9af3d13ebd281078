#pragma once

#include <exception>
#include <string>

namespace qve {

/// Base of every exception of the engine: a numeric status that clients match on, and a text meant for people.
/// The text is UTF-8.
class QuillonException : public std::exception {
public:
    QuillonException(int status, std::string text) : m_status(status), m_text(std::move(text)) {}
    const char* what() const noexcept override { return m_text.c_str(); }
    int GetStatus() const noexcept { return m_status; }
    const std::string& GetText() const noexcept { return m_text; }

private:
    int m_status;
    std::string m_text;
};

/// Faults of the program: unknown names, wrong calls.
class QVE_LogicError : public QuillonException {
public:
    using QuillonException::QuillonException;
};
class QVE_OutOfRange : public QVE_LogicError {
public:
    using QVE_LogicError::QVE_LogicError;
};
class QVE_InvalidArgument : public QVE_LogicError {
public:
    using QVE_LogicError::QVE_LogicError;
};
class QVE_DomainError : public QVE_LogicError {
public:
    using QVE_LogicError::QVE_LogicError;
};

/// Faults of data or state.
class QVE_RuntimeError : public QuillonException {
public:
    using QuillonException::QuillonException;
};
class QVE_RangeError : public QVE_RuntimeError {
public:
    using QVE_RuntimeError::QVE_RuntimeError;
};
class QVE_OverflowError : public QVE_RuntimeError {
public:
    using QVE_RuntimeError::QVE_RuntimeError;
};
class QVE_UnderflowError : public QVE_RuntimeError {
public:
    using QVE_RuntimeError::QVE_RuntimeError;
};
/// A fault of a server operation that is none of the above.
class QVE_Exception : public QVE_RuntimeError {
public:
    using QVE_RuntimeError::QVE_RuntimeError;
};

}  // namespace qve
