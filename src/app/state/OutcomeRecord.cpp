#include "app/state/OutcomeRecord.h"

namespace vellumor {

namespace {

using Kind = UsageFetchError::Kind;

struct Failure {
    const char* category;
    const char* layer;
};

Failure failureOf(UsageFetchError::Kind kind)
{
    switch (kind) {
    case Kind::keychain:
        return {"keychain_read_fail", "keychain"};
    case Kind::noService:
        return {"no_service", "keychain"};
    case Kind::rateLimited:
        return {"usage_429", "endpoint"};
    case Kind::http:
        return {"usage_http_error", "endpoint"};
    case Kind::decode:
        return {"parse_fail", "endpoint"};
    case Kind::transport:
        return {"transport_fail", "endpoint"};
    case Kind::unauthorized:
        return {"usage_401", "endpoint"};
    case Kind::forbidden:
        return {"usage_403", "endpoint"};
    }
    return {};
}

} // namespace

void recordOutcome(TelemetryRecorder& telemetry, const FetchOutcome& outcome)
{
    if (outcome.revival == RevivalStatus::unavailable)
        telemetry.noteReviveUnavailable();
    if (outcome.error) {
        const Failure failure = failureOf(outcome.error->kind);
        telemetry.noteFailure(failure.category, failure.layer);
    } else if (outcome.usage && outcome.source) {
        telemetry.noteServed(name(*outcome.source));
    }
}

} // namespace vellumor
