// Host stand-in for <android/binder_ibinder.h>. Binders belong to host processes (see
// <host/binder_process.h>); one handed to another process arrives there as a proxy, and a
// transaction on a proxy is marshalled and run on a binder thread of the binder's process.
#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>
#include <sys/types.h>

#include <cstdint>

typedef uint32_t transaction_code_t;
typedef uint32_t binder_flags_t;

enum {
    FLAG_ONEWAY = 0x01,
    FLAG_CLEAR_BUF = 0x20,
    FLAG_PRIVATE_LOCAL = 0x0000001,
};

enum {
    FIRST_CALL_TRANSACTION = 0x00000001,
    LAST_CALL_TRANSACTION = 0x00ffffff,
};

struct AIBinder_Class;
typedef struct AIBinder_Class AIBinder_Class;
struct AIBinder;
typedef struct AIBinder AIBinder;
struct AIBinder_Weak;
typedef struct AIBinder_Weak AIBinder_Weak;
struct AIBinder_DeathRecipient;
typedef struct AIBinder_DeathRecipient AIBinder_DeathRecipient;

typedef void* (*AIBinder_Class_onCreate)(void* args);
typedef void (*AIBinder_Class_onDestroy)(void* userData);
typedef binder_status_t (*AIBinder_Class_onTransact)(AIBinder* binder, transaction_code_t code,
                                                     const AParcel* in, AParcel* out);
typedef binder_status_t (*AIBinder_onDump)(AIBinder* binder, int fd, const char** args,
                                           uint32_t numArgs);
typedef void (*AIBinder_DeathRecipient_onBinderDied)(void* cookie);
typedef void (*AIBinder_DeathRecipient_onBinderUnlinked)(void* cookie);

__attribute__((warn_unused_result)) AIBinder_Class* AIBinder_Class_define(
        const char* interfaceDescriptor, AIBinder_Class_onCreate onCreate,
        AIBinder_Class_onDestroy onDestroy, AIBinder_Class_onTransact onTransact);
void AIBinder_Class_setOnDump(AIBinder_Class* clazz, AIBinder_onDump onDump);
const char* AIBinder_Class_getDescriptor(const AIBinder_Class* clazz);

__attribute__((warn_unused_result)) AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args);
bool AIBinder_isRemote(const AIBinder* binder);
bool AIBinder_isAlive(const AIBinder* binder);
binder_status_t AIBinder_ping(AIBinder* binder);
binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs);
binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                     void* cookie);
binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                       void* cookie);
uid_t AIBinder_getCallingUid();
pid_t AIBinder_getCallingPid();
void AIBinder_incStrong(AIBinder* binder);
void AIBinder_decStrong(AIBinder* binder);
int32_t AIBinder_debugGetRefCount(AIBinder* binder);
bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz);
const AIBinder_Class* AIBinder_getClass(AIBinder* binder);
void* AIBinder_getUserData(AIBinder* binder);
binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in);
binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in,
                                  AParcel** out, binder_flags_t flags);

__attribute__((warn_unused_result)) AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder);
void AIBinder_Weak_delete(AIBinder_Weak* weakBinder);
__attribute__((warn_unused_result)) AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weakBinder);

__attribute__((warn_unused_result)) AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(
        AIBinder_DeathRecipient_onBinderDied onBinderDied);
void AIBinder_DeathRecipient_setOnUnlinked(AIBinder_DeathRecipient* recipient,
                                           AIBinder_DeathRecipient_onBinderUnlinked onUnlinked);
void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient);
