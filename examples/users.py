# SPDX-License-Identifier: Apache-2.0
"""Creates users in a fresh appliance database, changes one, and lists them: users.py FILE"""

import sys

import qbobj


def main(path: str) -> int:
    with qbobj.open(path, create=True, volume="tank") as db:
        db.addGroup(GroupName="family")
        anna = db.addUser(UserName="anna", GroupName="family", Password="wonderland")
        guests = db.addUser([qbobj.User(UserName="bert"), qbobj.User(UserName="carla", Email="carla@example.com")])
        print(f"{anna.UserName} has id {anna.UserId}, {len(guests)} more came with her")

        # What is not named keeps its value.
        db.modifyUser(db.getUser(UserId=anna.UserId), Email="anna@example.com")

        try:
            db.addUser(UserName="anna")
        except qbobj.Error as error:
            print(f"{error.code}: {error.message} ({error.meaning})")

        # One pool of memory for all that a request reads.
        with db.request() as request:
            users = request.getUserCollection(order=-1)
            groups = {group.GroupId: group.GroupName for group in request.getGroupCollection()}
        for user in users:
            print(f"{user.UserId} {user.UserName:<8} {user.GroupName or '':<8} {user.Email or '-'}")
        print(f"{users.TotalEntries} users in {len(groups)} groups")
    return 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: users.py FILE")
    sys.exit(main(sys.argv[1]))
