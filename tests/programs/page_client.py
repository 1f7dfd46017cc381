#!/usr/bin/env python3
"""The calculator's page in a browser, as its server sees it: page_client.py METHOD LINK."""
import json
import re
import sys

import web_page


class Page(web_page.Page):
    """The page with its WebSocket."""

    def __init__(self, link):
        document = web_page.Page(link, "TOKEN/", headers="Sec-Fetch-Dest: document\r\n")
        self.link = link
        self.number = re.search(rb"component\.js\?page=(\d+)", document.body())[1].decode()
        self.cookie = f"Cookie: {document.headers['set-cookie'].partition(';')[0]}\r\n"
        super().__init__(link, "TOKEN/.tav/socket?page=" + self.number, headers=self.cookie)
        assert self.status == 101, self.status

    def call(self, name, *arguments):
        content = json.dumps({"method": name, "arguments": arguments})
        answer = web_page.Page(self.link, "TOKEN/.tav/call?page=" + self.number, method="POST",
                               origin=self.link[:self.link.index("/", 7)], headers=self.cookie,
                               content=content)
        return answer.status, json.loads(answer.body())


def main(method, link):
    """Prints what comes of the method, and how the page ends unless it is left."""
    page = Page(link)
    print(*page.call(method, "2", "3"), flush=True)
    if method != "divide":
        print(page.until("end"))


if __name__ == "__main__":
    main(*sys.argv[1:])
