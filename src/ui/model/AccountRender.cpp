#include "ui/model/AccountRender.h"

namespace vellumor {

namespace {

using State = AccountRenderState;
using Kind = UsageFetchError::Kind;

State withReadableToken(const AccountUsageState& state)
{
    if (!state.lastError)
        return State::loading;
    switch (state.lastError->kind) {
    case Kind::keychain:
    case Kind::noService:
        return State::noToken;
    case Kind::unauthorized:
        return State::expired;
    default:
        return state.isLoading ? State::loading : State::noData;
    }
}

State stateOf(TokenStatus token, const AccountUsageState& state, double effectiveInterval,
              Instant now)
{
    if (state.lastError && state.lastError->kind == Kind::forbidden)
        return State::blocked;
    if (state.usage)
        return state.isStale(effectiveInterval, now) ? State::stale : State::ok;
    switch (token) {
    case TokenStatus::expired:
    case TokenStatus::signedOut:
        return State::expired;
    case TokenStatus::needsApproval:
    case TokenStatus::notFound:
        return State::noToken;
    case TokenStatus::readable:
        break;
    }
    return withReadableToken(state);
}

} // namespace

AccountRender AccountRender::of(const Account& account, const AccountUsageState* state,
                                double effectiveInterval, Instant now)
{
    const AccountUsageState known = state != nullptr ? *state : AccountUsageState{};
    AccountRender render;
    render.name = account.displayName;
    render.state = stateOf(account.tokenStatus, known, effectiveInterval, now);
    if (!known.usage)
        return render;
    if (const LimitWindow* session = known.usage->sessionWindow())
        render.sessionPercent = session->percent;
    for (const LimitWindow& window : known.usage->nonSessionWindows())
        render.nonSessionPercents.push_back(window.percent);
    if (const LimitWindow* worst = known.usage->worstNonSession()) {
        render.worstNonSessionPercent = worst->percent;
        render.worstNonSessionTitle = LimitWindow::title(worst->kind, worst->scope);
    }
    return render;
}

} // namespace vellumor
