/*
 * The client library of qveserver, for C and everything that can call C.
 *
 * Every function gives a status: 0 is success. Other numbers are those of the server or of this library; the texts that
 * belong to them are kept with the connection (QVE_GetErrorInfo) or the server process, until its next call that fails.
 * Texts are UTF-8 and end with a NUL. Handles are closed by their Close function; closing a null handle is allowed. A
 * statement, rowset, value array or transfer may be closed after its connection was.
 *
 * A connection serves one call at a time: calls from several threads wait for each other. Only QVE_StatementCancel and
 * QVE_StatementEstimateProgress do not wait. For work in parallel open several connections.
 */
#ifndef QVE_H
#define QVE_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define QVE_API __attribute__((visibility("default")))
#else
#define QVE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef int32_t QVE_Status;

/* Statuses of this library. */
#define QVE_OK 0
#define QVE_CANCELLED 50000
#define QVE_ERROR_ARGUMENT 40506      /* a null handle or pointer where one is needed */
#define QVE_ERROR_OUT_OF_MEMORY 40507 /* and any fault without a number of its own */
#define QVE_ERROR_NOT_CONNECTED 40508 /* the connection was never made, or is closed */
#define QVE_ERROR_NETWORK 40509       /* the peer cannot be reached, or has gone */

typedef struct QVE_ServerProcess QVE_ServerProcess;
typedef struct QVE_Connection QVE_Connection;
typedef struct QVE_Statement QVE_Statement;
typedef struct QVE_Rowset QVE_Rowset;
typedef struct QVE_Insert QVE_Insert;
typedef struct QVE_ValueArray QVE_ValueArray;
typedef struct QVE_Upload QVE_Upload;
typedef struct QVE_Download QVE_Download;
typedef struct QVE_Properties QVE_Properties;
typedef struct QVE_ErrorInfo QVE_ErrorInfo;

/* Types of values: the low byte of QVE_Value.type. */
enum {
    QVE_INT8 = 1,
    QVE_UINT8 = 2,
    QVE_INT16 = 3,
    QVE_UINT16 = 4,
    QVE_INT32 = 5,
    QVE_UINT32 = 6,
    QVE_INT64 = 7,
    QVE_UINT64 = 8,
    QVE_FLOAT = 9,
    QVE_DOUBLE = 10,
    QVE_BOOL = 11,     /* one byte, 0 or 1 */
    QVE_DATE = 12,     /* QVE_Date */
    QVE_DATETIME = 13, /* QVE_Datetime */
    QVE_DURATION = 14, /* QVE_Duration */
    QVE_TEXT8 = 15,    /* 8-bit text, `size` bytes, no NUL */
    QVE_TEXT16 = 16,   /* UTF-16 text, `size` bytes, no NUL */
    QVE_SPATIAL = 17
};

/* In QVE_Value.type: the value is null. It has no data then. */
#define QVE_NULL 0x100u
#define QVE_TYPE(type) ((type)&0xFFu)

/* A view of one value. `data` may be misaligned for its type: copy it (memcpy). */
typedef struct QVE_Value {
    uint32_t type;
    uint32_t size; /* bytes */
    const void* data;
} QVE_Value;

typedef struct QVE_Date {
    int32_t year; /* there is no year 0 */
    uint8_t month;
    uint8_t day;
    uint8_t unused[2];
} QVE_Date;

typedef struct QVE_Datetime {
    int32_t year;
    uint8_t month;
    uint8_t day;
    uint8_t hour;
    uint8_t minute;
    uint8_t second;
    uint8_t unused;
    int16_t fraction; /* tenths of a millisecond */
} QVE_Datetime;

/* Every part carries the sign of the duration. */
typedef struct QVE_Duration {
    int32_t days;
    int8_t hours;
    int8_t minutes;
    int8_t seconds;
    uint8_t unused;
    int16_t fraction; /* tenths of a millisecond */
    uint8_t padding[2];
} QVE_Duration;

/* ---- Server process: starts a private server, which ends with QVE_ServerProcessStop or with this process. ---- */

typedef struct QVE_ServerProcessOptions {
    const char* path;           /* of the program; looked up in PATH when it holds no "/" */
    const char* listen;         /* connection string; null: any free port of the loopback address */
    const char* log;            /* path of the log file, or null */
    const char* config;         /* path of the configuration file, or null */
    const char* temp_directory; /* the server's TMPDIR, or null for that of this process */
    int desktop;                /* not 0: pass --desktop */
} QVE_ServerProcessOptions;

QVE_API QVE_Status QVE_ServerProcessOpen(QVE_ServerProcess** process);
/* Starts the server and waits until it can be connected to. 40513: it could not be started; 40514: it did not call
 * back. */
QVE_API QVE_Status QVE_ServerProcessStart(QVE_ServerProcess* process, const QVE_ServerProcessOptions* options);
QVE_API QVE_Status QVE_ServerProcessStop(QVE_ServerProcess* process);
QVE_API QVE_Status QVE_ServerProcessIsAlive(QVE_ServerProcess* process, int* alive);
/* The text is valid until the process is stopped or closed. */
QVE_API QVE_Status QVE_ServerProcessGetConnectionDescriptor(QVE_ServerProcess* process, const char** descriptor);
QVE_API QVE_Status QVE_ServerProcessGetProcessId(QVE_ServerProcess* process, int* id);
QVE_API QVE_Status QVE_ServerProcessGetErrorInfo(QVE_ServerProcess* process, QVE_ErrorInfo** info);
/* Stops the server when it runs. */
QVE_API QVE_Status QVE_ServerProcessClose(QVE_ServerProcess* process);

/* ---- Connection: one session on a server. ---- */

QVE_API QVE_Status QVE_ConnectionOpen(QVE_Connection** connection);
/* `descriptor`: a connection string such as "quil.tcp://[::1]:27042". */
QVE_API QVE_Status QVE_ConnectionConnect(QVE_Connection* connection, const char* descriptor);
/* What is known of the connection: "descriptor" and "session". */
QVE_API QVE_Status QVE_ConnectionGetProperties(QVE_Connection* connection, QVE_Properties** properties);
/* Ends the session and frees the handle, whatever the status. */
QVE_API QVE_Status QVE_ConnectionDisconnect(QVE_Connection* connection);
/* Writes the connection string of a host and port with its NUL into `text`, of `size` bytes. */
QVE_API QVE_Status QVE_ConnectionDescriptorTcp(const char* host, uint16_t port, char* text, size_t size);

/* ---- Properties: pairs of values. ---- */

QVE_API QVE_Status QVE_PropertiesGetCount(QVE_Properties* properties, uint32_t* count);
/* The values are valid as long as the handle. */
QVE_API QVE_Status QVE_PropertiesGetProperty(QVE_Properties* properties, uint32_t index, QVE_Value* key,
                                             QVE_Value* value);
QVE_API QVE_Status QVE_PropertiesClose(QVE_Properties* properties);

/* ---- Statements. A statement without a result gives a null rowset. ---- */

typedef struct QVE_Progress {
    uint64_t first_rows;
    uint64_t last_rows;
    uint64_t done;
    uint64_t total;
} QVE_Progress;

QVE_API QVE_Status QVE_QueryExecute(QVE_Connection* connection, const char* query, QVE_Rowset** rowset);

QVE_API QVE_Status QVE_StatementOpen(QVE_Connection* connection, QVE_Statement** statement);
QVE_API QVE_Status QVE_StatementPlan(QVE_Statement* statement, const char* plan);
QVE_API QVE_Status QVE_StatementPrepare(QVE_Statement* statement, const char* query);
QVE_API QVE_Status QVE_StatementExecute(QVE_Statement* statement, QVE_Rowset** rowset);
/* From any thread, also while a call of the connection is under way: that call, or the next QVE_StatementExecute, gives
 * QVE_CANCELLED. Not from a signal handler. */
QVE_API QVE_Status QVE_StatementCancel(QVE_Statement* statement);
/* How far a statement is: bounds of the number of rows that it gives, and units of work, done and in all. All ones
 * stand for what is not known. From any thread, also while the statement executes. */
QVE_API QVE_Status QVE_StatementEstimateProgress(QVE_Statement* statement, QVE_Progress* progress);
QVE_API QVE_Status QVE_StatementClose(QVE_Statement* statement);

/* ---- Rowsets: values row by row. ---- */

QVE_API QVE_Status QVE_RowsetGetProperties(QVE_Rowset* rowset, QVE_Properties** properties);
QVE_API QVE_Status QVE_RowsetGetColumnCount(QVE_Rowset* rowset, uint32_t* count);
/* The first two are "name" and "type". */
QVE_API QVE_Status QVE_RowsetGetColumnProperties(QVE_Rowset* rowset, uint32_t column, QVE_Properties** properties);
QVE_API QVE_Status QVE_RowsetHasMoreValues(QVE_Rowset* rowset, int* more);
/* Gives the next values, at most `max_values`, row after row; 0 at the end. They are valid until the rowset's next
 * call. */
QVE_API QVE_Status QVE_RowsetGetValues(QVE_Rowset* rowset, size_t max_values, QVE_Value* values, size_t* count);
/* Gives all values of the next reply at once, without copying them; an empty array at the end. */
QVE_API QVE_Status QVE_RowsetGetValueArray(QVE_Rowset* rowset, QVE_ValueArray** array);
QVE_API QVE_Status QVE_RowsetClose(QVE_Rowset* rowset);

/* ---- Value arrays. ---- */

QVE_API QVE_Status QVE_ValueArrayClear(QVE_ValueArray* array);
QVE_API QVE_Status QVE_ValueArrayGetSizeBytes(QVE_ValueArray* array, size_t* bytes);
QVE_API QVE_Status QVE_ValueArrayGetNumValues(QVE_ValueArray* array, size_t* count);
/* Gives the next values, at most `max_values`. They are valid until the array is cleared or closed. */
QVE_API QVE_Status QVE_ValueArrayReadValues(QVE_ValueArray* array, size_t max_values, QVE_Value* values, size_t* count);
/* 40505: the array is not open for write. */
QVE_API QVE_Status QVE_ValueArrayWriteValues(QVE_ValueArray* array, size_t count, const QVE_Value* values);
QVE_API QVE_Status QVE_ValueArrayClose(QVE_ValueArray* array);

/* ---- Inserts: rows to be added to a table, all at the commit or none. ---- */

/* Opens an insert of `count` columns, named by `columns`; all columns of the table in their order when `count` is 0.
 * The columns that are not named get their default values, or nulls. */
QVE_API QVE_Status QVE_InsertOpen(QVE_Connection* connection, const char* schema, const char* table, uint32_t count,
                                  const char* const* columns, QVE_Insert** insert);
QVE_API QVE_Status QVE_InsertGetColumnCount(QVE_Insert* insert, uint32_t* count);
/* The first two are "name" and "type", the type of the values to send. */
QVE_API QVE_Status QVE_InsertGetColumnProperties(QVE_Insert* insert, uint32_t column, QVE_Properties** properties);
/* Sends values, row after row; a row may continue in the next call. Numbers of other types will do if the column can
 * hold them; what it cannot take becomes null. Values are not checked at once: what an earlier call sent may be why
 * this one fails, and an insert that failed can only be closed. 40429: no such insert. */
QVE_API QVE_Status QVE_InsertPutValues(QVE_Insert* insert, size_t count, const QVE_Value* values);
/* An array to be filled by QVE_ValueArrayWriteValues and sent by QVE_InsertPutValueArray, any number of times. */
QVE_API QVE_Status QVE_InsertValueArrayOpen(QVE_Insert* insert, QVE_ValueArray** array);
/* Sends the values without copying them, and clears the array. 40517: the array is not of QVE_InsertValueArrayOpen. */
QVE_API QVE_Status QVE_InsertPutValueArray(QVE_Insert* insert, QVE_ValueArray* array);
/* Adds the rows to the table. 40034: the last row is not whole. */
QVE_API QVE_Status QVE_InsertCommit(QVE_Insert* insert);
/* Drops what was not committed. */
QVE_API QVE_Status QVE_InsertClose(QVE_Insert* insert);

/* ---- Whole databases as package files. ---- */

/* Begins to send a file to a path of the server, where no database may lie. */
QVE_API QVE_Status QVE_DatabaseUploadOpen(QVE_Connection* connection, const char* path, QVE_Upload** upload);
/* How many bytes will be sent in all; to be told before the commit. */
QVE_API QVE_Status QVE_UploadSetSize(QVE_Upload* upload, uint64_t size);
/* Sends the next bytes. Some mebibytes at a time go fastest. */
QVE_API QVE_Status QVE_UploadSend(QVE_Upload* upload, const void* bytes, uint32_t count);
/* Ends the upload: the file is on the server's disk then. 40437: it has another size than was told, and is removed. */
QVE_API QVE_Status QVE_UploadCommit(QVE_Upload* upload);
/* Frees the handle. What was sent and not committed stays at the path, and the next upload takes its place. */
QVE_API QVE_Status QVE_UploadClose(QVE_Upload* upload);

/* Opens a file of the server. */
QVE_API QVE_Status QVE_DatabaseDownloadOpen(QVE_Connection* connection, const char* path, QVE_Download** download);
QVE_API QVE_Status QVE_DownloadGetSize(QVE_Download* download, uint64_t* size);
/* Gives the next bytes, at most `max_bytes`, and how many there are. 40415: all of them were given already. */
QVE_API QVE_Status QVE_DownloadRecv(QVE_Download* download, uint32_t max_bytes, void* bytes, uint32_t* count);
QVE_API QVE_Status QVE_DownloadClose(QVE_Download* download);

/* ---- Errors. ---- */

/* What is known of the connection's last failure. */
QVE_API QVE_Status QVE_GetErrorInfo(QVE_Connection* connection, QVE_ErrorInfo** info);
/* Whether the user can do something about a status: mend a statement, free space, reach the server. */
QVE_API int QVE_IsActionableError(QVE_Status status);
QVE_API QVE_Status QVE_ErrorInfoGetCount(QVE_ErrorInfo* info, uint32_t* count);
/* The text is valid as long as the handle. */
QVE_API QVE_Status QVE_ErrorInfoGetError(QVE_ErrorInfo* info, uint32_t index, QVE_Status* status, const char** text);
QVE_API QVE_Status QVE_ErrorInfoClose(QVE_ErrorInfo* info);

#ifdef __cplusplus
}
#endif

#endif
