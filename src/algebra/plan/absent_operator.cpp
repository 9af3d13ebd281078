#include "algebra/plan/absent_operator.h"

#include <string>

#include "algebra/plan/status.h"
#include "system/QuillonException.h"

namespace qve {

void throw_absent_operator(const char* name) {
    throw QVE_LogicError(status::absent_operator, std::string("OperatorVisitor: no operator ") + name);
}

}  // namespace qve
