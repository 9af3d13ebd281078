#include "commands/QuerybandCommand.h"

#include "algebra/OperatorVisitor.h"

namespace qve {

void QuerybandCommand::Accept(OperatorVisitor& visitor) {
    visitor.VisitQuerybandCommand(*this);
}

}  // namespace qve
