#pragma once

/// All expression classes, for what walks expression trees.
#include "vql/VQLCaseExpression.h"
#include "vql/VQLExpressionVisitor.h"
#include "vql/VQLFuncallExpression.h"
#include "vql/VQLIdentifierExpression.h"
#include "vql/VQLLiteralExpression.h"
