"""The homes that are shown and photographed, by name: each a list of accounts."""
from histories import Week, by_day_alone, receipt
from world import CREDITS, DAY, HOUR, Account, reading, session, weekly, window

MINUTE = 60.0
LONG_NAME = "The account of the department for everything that is left"  # about 60 characters
OLD = (session(38, 90 * MINUTE), weekly(12, 5 * DAY + 22 * HOUR))


def four():
    return [
        Account("ana", "Ana", reading(
            session(47, 134 * MINUTE), weekly(41, 3 * DAY + 6 * HOUR),
            window("weekly_scoped", 17, 3 * DAY + 6 * HOUR, "Opus")), plan="claude_max", has_history=True,
            shows="on pace for ~85% by reset"),
        Account("work", "Work", reading(session(93, 48 * MINUTE), weekly(78, DAY + 4 * HOUR), extra_usage=CREDITS),
                plan="claude_team", has_history=True, shows="Usage credits"),
        Account("side", "Side project", known=(session(0, None), weekly(12, 5 * DAY + 22 * HOUR)), age=2400.0,
                waits=600.0, shows="Showing last update"),
        Account("client", "Client Nordwind East", signed_in="out", shows="Sign in to this account in Claude Code"),
    ]


def empty():
    return []


def notes():
    """Every status note, and every reason why there is nothing to show. The popover's opening asks once more, two
    seconds for each account, so those that look different afterwards come last."""
    failed, refused, forbidden = {"status": 500}, {"status": 429, "headers": {"Retry-After": "30"}}, {"status": 403}
    return [
        Account("blocked", "Blocked", forbidden, known=OLD, shows="Blocked while updating usage numbers (HTTP 403)"),
        Account("blocked-new", "Blocked, new", forbidden, shows="Blocked while updating usage numbers (HTTP 403)"),
        Account("failed", "Failed", failed, known=OLD, shows="Couldn’t refresh — showing last update"),
        Account("failed-new", "Failed, new", failed, shows="Couldn’t update usage numbers (HTTP 500)"),
        Account("garbage", "Garbage", {"body": "<html>busy</html>"}, shows="Couldn’t update usage numbers"),
        Account("nothing", "No limits", {"body": {"limits": []}}, shows="No usage data"),
        Account("waits", "Waiting", known=OLD, waits=600.0, shows="Showing last update"),
        Account("limited", "Rate limited", refused, known=OLD, shows="Rate limited — showing last update"),
        Account("limited-new", "Rate limited, new", refused, shows="Rate limited — waiting before the next refresh"),
        Account("never", "Never signed in", signed_in="never"),
        Account("out", "Signed out", signed_in="out", known=OLD, shows="Sign in to this account in Claude Code"),
        Account("retry", "Renewal fails", signed_in="expired", known=OLD,
                shows="Couldn’t refresh your sign-in — will retry"),
        Account("refused", "Renewal refused", signed_in="expired", known=OLD, renewal="demonstration-token-unknown",
                shows="Sign in to this account in Claude Code"),
        Account("renewed", "Renewed", reading(session(21), weekly(9)), signed_in="expired",
                renewal="demonstration-token-renewed", shows="Sign-in refreshed"),
        Account("renewing", "Renewing", signed_in="expired", known=OLD, renewal="late",
                shows="Refreshing your sign-in…"),
    ]


def offline():
    """To be shown without a network."""
    shows = "Offline — showing last update"
    return [Account("train", "On the train", known=OLD, waits=600.0, shows=shows),
            Account("home", "At home", known=(session(91), weekly(77)), waits=600.0, shows=shows)]


def long():
    """Names that nobody would choose, and some that people do."""
    names = [LONG_NAME, LONG_NAME * 5,
             "حساب العمل الرئيسي للفريق في القاهرة", "🚀 Raketen & Söhne 🧑‍🚀",
             "<b>Bold</b> &amp; <a href='x'>link</a>", "First line\nsecond line", "_Underlined _names", "x"]
    accounts = [Account(f"long-{number}", name, reading(session(10 * number + 5), weekly(33)))
                for number, name in enumerate(names)]
    accounts[0].answer = reading(session(100, 5 * MINUTE), weekly(99.6), window(
        "weekly_scoped", 3, DAY, "A model with a name that does not fit into any column"))
    for account in accounts:
        account.shows = "33%"
    accounts[0].shows = "100%"
    return accounts


def many(count=40):
    """So many that they do not fit on a screen; what is known of them is new."""
    return [Account(f"many-{number:04}", f"Account {number}", reading(session(number % 101), weekly(40)),
                    known=(session(number % 101), weekly(40)), age=30.0, is_pinned=number < 4)
            for number in range(count)]


def histories():
    """Whose history is shown, each in its turn: of nothing, of a day, of a week with all that may be in one."""
    day = Week(["session", "weekly_all"], days=0.9, reset_ago=4.2 * DAY)
    week = Week(["session", "weekly_all"], is_watched=by_day_alone)
    full = Week(["session", "weekly_all", "weekly_scoped", "seven_day_sonnet"], is_watched=by_day_alone, pace=1.7)
    before = receipt(9.6 * DAY, 64.0, {"session": 71.0, "weekly_all": 55.0}, resets=7)
    last = receipt(2.6 * DAY, 58.0, {"session": 97.0, "weekly_all": 70.0}, resets=9)
    scoped = receipt(2.6 * DAY, 58.0, {"session": 100.0, "seven_day_sonnet": 34.0, "weekly_all": 93.0,
                                       "weekly_scoped": 61.0}, resets=12)
    return [Account("new", "New", known=(session(4), weekly(2)), age=90.0, waits=600.0),
            Account("day", "One day", day.answer(), samples=day.samples),
            Account("week", "Ana", week.answer(), samples=week.samples, receipts=(before, last)),
            Account("three", LONG_NAME, full.answer("Opus"), samples=full.samples, receipts=(scoped,))]


WORLDS = {world.__name__: world for world in (four, empty, notes, offline, long, many, histories)}
