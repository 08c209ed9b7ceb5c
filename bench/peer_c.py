#!/usr/bin/env python3
"""Peer C: what a Python back end does for the user list: SQLAlchemy Core, the same rows, plain objects.

    peer_c.py DATABASE [ROUNDS]     prints the median of a full user list in microseconds
"""
import statistics
import sys
import time

from sqlalchemy import create_engine, text

LISTED = (
    "FROM \"$user\" U WHERE (U.is_privileged=0 AND U.group_id<>98 AND U.rid IS NULL AND U.uname<>'nobody' AND "
    "U.uname<>'guest' AND U.group_id<>IFNULL((SELECT id FROM \"$group\" G WHERE G.gname='guest'),"
    "(SELECT id FROM \"$group\" G WHERE G.gname='nogroup')))"
)
COUNT = text("SELECT COUNT(*) " + LISTED)
USERS = text(
    "SELECT U.id,U.uname,(SELECT G.gname FROM \"$group\" G WHERE G.id=U.group_id),U.home,U.email,U.passwd,"
    "CASE WHEN U.rid IS NULL THEN 0 ELSE 1 END,U.fullname,U.is_locked,U.group_id,U.shell_access "
    + LISTED + " ORDER BY U.uname"
)
QUOTAS = text(
    "SELECT S.zfs_name,Q.mb_hard,QS.mb_used FROM user_quota Q INNER JOIN share S ON S.id=Q.share_id "
    "LEFT JOIN _user_quota_stat QS ON QS.share_id=Q.share_id AND QS.user_id=Q.user_id WHERE Q.user_id=:id"
)
HOME = text(
    "SELECT H.snapshot_protection_enabled,H.quota,(SELECT S.used FROM \"_hf_zfs_stat\" S WHERE S.user_id=H.user_id),"
    "H.visible_snapdir,H.prev_versions FROM \"$home_folder\" H WHERE H.user_id=:id"
)
TIME_MACHINE = text("SELECT T.enabled,T.capacity_mb FROM \"$timemachine_quota\" T WHERE T.user_id=:id")


class User:
    __slots__ = ("id", "name", "group", "home", "email", "password", "domain", "full_name", "locked", "shell",
                 "quotas", "home_folder", "time_machine")


def user_list(connection):
    total = connection.execute(COUNT).scalar()
    connection.execute(COUNT).scalar()
    users = []
    for row in connection.execute(USERS).all():
        user = User()
        (user.id, user.name, user.group, user.home, user.email, password, user.domain, user.full_name, user.locked,
         _, user.shell) = row
        user.password = "●●●●●●●●" if password else ""
        user.quotas = [tuple(quota) for quota in connection.execute(QUOTAS, {"id": user.id})]
        user.home_folder = connection.execute(HOME, {"id": user.id}).first()
        user.time_machine = connection.execute(TIME_MACHINE, {"id": user.id}).first()
        users.append(user)
    assert len(users) == total
    return users


def main():
    engine = create_engine("sqlite:///" + sys.argv[1])
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 3
    times = []
    with engine.connect() as connection:
        user_list(connection)
        for _ in range(rounds):
            start = time.perf_counter()
            count = len(user_list(connection))
            times.append(time.perf_counter() - start)
    print(f"{statistics.median(times) * 1e6:.1f} {count}")


main()
# SPDX-License-Identifier: Apache-2.0
