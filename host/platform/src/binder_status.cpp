// The NDK's AStatus: an exception code with a transport status or a service-specific error.
#include <android/binder_status.h>

#include <cstring>
#include <string>

struct AStatus {
    binder_exception_t exception = EX_NONE;
    binder_status_t status = STATUS_OK;
    int32_t serviceSpecific = 0;
    std::string message;
};

namespace {

AStatus* make(binder_exception_t exception, binder_status_t status, int32_t serviceSpecific,
              const char* message) {
    return new AStatus{exception, status, serviceSpecific, message != nullptr ? message : ""};
}

}  // namespace

// Success is one shared object, so that a call that succeeds allocates nothing for its status.
AStatus* AStatus_newOk() {
    static AStatus* ok = new AStatus();
    return ok;
}
AStatus* AStatus_fromExceptionCode(binder_exception_t exception) {
    return make(exception, STATUS_OK, 0, nullptr);
}
AStatus* AStatus_fromExceptionCodeWithMessage(binder_exception_t exception, const char* message) {
    return make(exception, STATUS_OK, 0, message);
}
AStatus* AStatus_fromServiceSpecificError(int32_t serviceSpecific) {
    return make(EX_SERVICE_SPECIFIC, STATUS_OK, serviceSpecific, nullptr);
}
AStatus* AStatus_fromServiceSpecificErrorWithMessage(int32_t serviceSpecific, const char* message) {
    return make(EX_SERVICE_SPECIFIC, STATUS_OK, serviceSpecific, message);
}
AStatus* AStatus_fromStatus(binder_status_t status) {
    if (status == STATUS_OK) return AStatus_newOk();
    return make(EX_TRANSACTION_FAILED, status, 0, nullptr);
}
bool AStatus_isOk(const AStatus* status) {
    return status->exception == EX_NONE;
}
binder_exception_t AStatus_getExceptionCode(const AStatus* status) {
    return status->exception;
}
int32_t AStatus_getServiceSpecificError(const AStatus* status) {
    return status->serviceSpecific;
}
binder_status_t AStatus_getStatus(const AStatus* status) {
    return status->status;
}
const char* AStatus_getMessage(const AStatus* status) {
    return status->message.c_str();
}
const char* AStatus_getDescription(const AStatus* status) {
    std::string text = "Status(" + std::to_string(status->exception) + ", " +
                       std::to_string(status->status) + ", " +
                       std::to_string(status->serviceSpecific) + "): '" + status->message + "'";
    return strdup(text.c_str());
}
void AStatus_deleteDescription(const char* description) {
    free(const_cast<char*>(description));
}
void AStatus_delete(AStatus* status) {
    if (status != AStatus_newOk()) delete status;
}
