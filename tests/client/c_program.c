#include "tests/client/c_program.h"

#include <string.h>

#include "client/qve.h"

_Static_assert(sizeof(QVE_Date) == 8, "the payload of a date");
_Static_assert(sizeof(QVE_Datetime) == 12, "the payload of a datetime");
_Static_assert(sizeof(QVE_Duration) == 12, "the payload of a duration");

static QVE_Status add_up(QVE_Rowset* rowset, long long* sum) {
    QVE_Value values[3];
    size_t count = 0;
    QVE_Status status;
    *sum = 0;
    while ((status = QVE_RowsetGetValues(rowset, 3, values, &count)) == QVE_OK && count != 0) {
        for (size_t i = 0; i < count; ++i) {
            int64_t number;
            if ((values[i].type & QVE_NULL) || QVE_TYPE(values[i].type) != QVE_INT64) continue;
            memcpy(&number, values[i].data, sizeof(number));
            *sum += number;
        }
    }
    return status;
}

int run_c_program(const char* descriptor, const char* query, long long* sum) {
    QVE_Connection* connection = NULL;
    QVE_Rowset* rowset = NULL;
    QVE_Status status = QVE_ConnectionOpen(&connection);
    if (status == QVE_OK) status = QVE_ConnectionConnect(connection, descriptor);
    if (status == QVE_OK) status = QVE_QueryExecute(connection, query, &rowset);
    if (status == QVE_OK && rowset) status = add_up(rowset, sum);
    QVE_RowsetClose(rowset);
    QVE_ConnectionDisconnect(connection);
    return status;
}
