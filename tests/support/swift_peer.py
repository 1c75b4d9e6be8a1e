#!/usr/bin/env python3
"""A small OpenStack Swift server on loopback for the account and backup tests.

It signs in through TempAuth (v1), Keystone v2 and Keystone v3, and serves one account: containers and
objects in memory, listed as Swift lists them (JSON or plain, with prefix, delimiter, marker and limit),
with ranges on reads and MD5 ETags on writes, which is what rclone's and restic's swift back-ends use.

    swift_peer.py --port 8080 --user tester --key secret [--project backups] [--domain Default]
"""

import argparse
import email.utils
import hashlib
import json
import secrets
import sys
import threading
import time
import urllib.parse
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

ACCOUNT = "AUTH_tester"


class Store:
    def __init__(self):
        self.lock = threading.Lock()
        self.containers = {}  # name -> {object name -> (bytes, headers, timestamp)}
        self.tokens = set()


def listing(names, query, subdirs=True):
    """Names of one level after prefix, with marker, end_marker and limit applied."""
    prefix = query.get("prefix", [""])[0]
    delimiter = query.get("delimiter", [""])[0]
    marker = query.get("marker", [""])[0]
    end_marker = query.get("end_marker", [""])[0]
    limit = int(query.get("limit", ["10000"])[0] or 10000)
    entries = []
    seen = set()
    for name in sorted(names):
        if not name.startswith(prefix):
            continue
        rest = name[len(prefix):]
        if delimiter and subdirs and delimiter in rest:
            sub = prefix + rest[: rest.index(delimiter) + len(delimiter)]
            if sub in seen:
                continue
            seen.add(sub)
            entry = (sub, True)
        else:
            entry = (name, False)
        if marker and entry[0] <= marker:
            continue
        if end_marker and entry[0] >= end_marker:
            continue
        entries.append(entry)
        if len(entries) >= limit:
            break
    return entries


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    server_version = "SwiftPeer/1"

    def log_message(self, format, *args):
        if self.server.verbose:
            sys.stderr.write("%s\n" % (format % args))

    # -- plumbing -------------------------------------------------------------------------------------
    def body(self):
        if self.headers.get("Transfer-Encoding", "").lower() == "chunked":
            data = bytearray()
            while True:
                size = int(self.rfile.readline().split(b";")[0].strip() or b"0", 16)
                if size == 0:
                    while self.rfile.readline() not in (b"\r\n", b"\n", b""):
                        pass
                    return bytes(data)
                data += self.rfile.read(size)
                self.rfile.readline()
        length = int(self.headers.get("Content-Length", "0") or 0)
        return self.rfile.read(length) if length else b""

    def reply(self, status, payload=b"", headers=None, head=False):
        self.send_response(status)
        for key, value in (headers or {}).items():
            self.send_header(key, value)
        if isinstance(payload, str):
            payload = payload.encode()
        self.send_header("Content-Length", str(len(payload)))
        self.send_header("X-Trans-Id", secrets.token_hex(8))
        self.end_headers()
        if payload and not head:
            self.wfile.write(payload)

    def storage_url(self):
        return "http://127.0.0.1:%d/v1/%s" % (self.server.server_port, ACCOUNT)

    def new_token(self):
        token = "tk_" + secrets.token_hex(16)
        with self.server.store.lock:
            self.server.store.tokens.add(token)
        return token

    def expiry(self):
        return time.strftime("%Y-%m-%dT%H:%M:%S.000000Z", time.gmtime(time.time() + 3600))

    def catalog_v3(self):
        url = self.storage_url()
        region = self.server.region
        return [{"type": "object-store", "name": "swift", "id": "swift",
                 "endpoints": [{"id": "e" + interface, "interface": interface, "region": region,
                                "region_id": region, "url": url} for interface in ("public", "internal", "admin")]}]

    # -- sign-in --------------------------------------------------------------------------------------
    def auth_v1(self, head=False):
        user = self.headers.get("X-Auth-User") or self.headers.get("X-Storage-User")
        key = self.headers.get("X-Auth-Key") or self.headers.get("X-Storage-Pass")
        if user != self.server.user or key != self.server.key:
            return self.reply(401, "<html><h1>Unauthorized</h1><p>This server could not verify that you are "
                                   "authorized to access the document you requested.</p></html>",
                              {"Content-Type": "text/html; charset=UTF-8"}, head)
        token = self.new_token()
        self.reply(200, "", {"X-Auth-Token": token, "X-Storage-Token": token, "X-Storage-Url": self.storage_url(),
                             "X-Auth-Token-Expires": "3600"}, head)

    def auth_v2(self):
        try:
            auth = json.loads(self.body() or b"{}").get("auth", {})
        except ValueError:
            return self.reply(400, "bad JSON")
        credentials = auth.get("passwordCredentials") or {}
        api = auth.get("RAX-KSKEY:apiKeyCredentials") or {}
        user = credentials.get("username") or api.get("username")
        key = credentials.get("password") or api.get("apiKey")
        tenant = auth.get("tenantName") or auth.get("tenantId") or ""
        if user != self.server.user or key != self.server.key or tenant not in ("", self.server.project):
            return self.reply(401, json.dumps({"error": {"code": 401, "title": "Unauthorized",
                                                         "message": "The request you have made requires "
                                                                    "authentication."}}),
                              {"Content-Type": "application/json"})
        token = self.new_token()
        url = self.storage_url()
        access = {"access": {
            "token": {"id": token, "expires": self.expiry(), "tenant": {"id": "t1", "name": self.server.project}},
            "serviceCatalog": [{"type": "object-store", "name": "swift",
                                "endpoints": [{"region": self.server.region, "publicURL": url, "internalURL": url,
                                               "adminURL": url, "tenantId": "t1"}]}],
            "user": {"id": "u1", "name": user}}}
        self.reply(200, json.dumps(access), {"Content-Type": "application/json"})

    def auth_v3(self):
        try:
            auth = json.loads(self.body() or b"{}").get("auth", {})
        except ValueError:
            return self.reply(400, "bad JSON")
        user = auth.get("identity", {}).get("password", {}).get("user", {})
        domain = (user.get("domain") or {}).get("name") or (user.get("domain") or {}).get("id") or ""
        project = (auth.get("scope") or {}).get("project") or {}
        refused = (user.get("name") != self.server.user or user.get("password") != self.server.key
                   or domain.lower() != self.server.domain.lower()
                   or project.get("name", self.server.project) != self.server.project)
        if refused:
            return self.reply(401, json.dumps({"error": {"code": 401, "title": "Unauthorized",
                                                         "message": "The request you have made requires "
                                                                    "authentication."}}),
                              {"Content-Type": "application/json"})
        token = self.new_token()
        body = {"token": {"methods": ["password"], "expires_at": self.expiry(),
                          "user": {"id": "u1", "name": user.get("name"),
                                   "domain": {"id": "default", "name": self.server.domain}},
                          "project": {"id": "p1", "name": self.server.project,
                                      "domain": {"id": "default", "name": self.server.domain}},
                          "catalog": self.catalog_v3()}}
        self.reply(201, json.dumps(body), {"Content-Type": "application/json", "X-Subject-Token": token})

    # -- storage --------------------------------------------------------------------------------------
    def route(self):
        """(container, object) of a storage path, or None when the path is not in the account."""
        path = urllib.parse.urlsplit(self.path).path
        parts = path.split("/", 4)
        if len(parts) < 3 or parts[1] != "v1" or parts[2] != ACCOUNT:
            return None
        container = urllib.parse.unquote(parts[3]) if len(parts) > 3 else ""
        obj = urllib.parse.unquote(parts[4]) if len(parts) > 4 else ""
        return container, obj

    def authorised(self):
        with self.server.store.lock:
            return self.headers.get("X-Auth-Token") in self.server.store.tokens

    def query(self):
        return urllib.parse.parse_qs(urllib.parse.urlsplit(self.path).query, keep_blank_values=True)

    def send_list(self, entries, as_json, head=False, headers=None):
        headers = dict(headers or {})
        if as_json:
            headers["Content-Type"] = "application/json; charset=utf-8"
            payload = json.dumps(entries)
        else:
            headers["Content-Type"] = "text/plain; charset=utf-8"
            payload = "".join((e.get("name") or e.get("subdir")) + "\n" for e in entries)
        status = 200 if entries or as_json else 204
        self.reply(status, payload if status == 200 else "", headers, head)

    def storage(self, method):
        where = self.route()
        if where is None:
            return self.reply(404, "Not Found")
        if not self.authorised():
            self.body()
            return self.reply(401, "<html><h1>Unauthorized</h1></html>", {"Content-Type": "text/html"})
        container, obj = where
        store = self.server.store
        query = self.query()
        as_json = query.get("format", [""])[0] == "json"
        head = method == "HEAD"
        with store.lock:
            if not container:
                if method in ("GET", "HEAD"):
                    names = list(store.containers)
                    entries = []
                    for name, _ in listing(names, query, subdirs=False):
                        objects = store.containers[name]
                        entries.append({"name": name, "count": len(objects),
                                        "bytes": sum(len(v[0]) for v in objects.values()),
                                        "last_modified": "2026-01-01T00:00:00.000000"})
                    return self.send_list(entries, as_json, head, {
                        "X-Account-Container-Count": str(len(names)),
                        "X-Account-Object-Count": str(sum(len(c) for c in store.containers.values())),
                        "X-Account-Bytes-Used": str(sum(len(v[0]) for c in store.containers.values()
                                                        for v in c.values()))})
                return self.reply(405, "Method Not Allowed")
            if not obj:
                return self.container(method, container, query, as_json, head)
            return self.object(method, container, obj, head)

    def container(self, method, container, query, as_json, head):
        store = self.server.store
        objects = store.containers.get(container)
        if method == "PUT":
            self.body()
            if len(container.encode()) > 256 or "/" in container:
                return self.reply(400, "Container name too long or invalid")
            if objects is not None:
                return self.reply(202, "")
            store.containers[container] = {}
            return self.reply(201, "")
        if method == "POST":
            self.body()
            return self.reply(204 if objects is not None else 404, "")
        if objects is None:
            return self.reply(404, "<html><h1>Not Found</h1><p>The resource could not be found.</p></html>",
                              {"Content-Type": "text/html"}, head)
        if method == "DELETE":
            if objects:
                return self.reply(409, "There was a conflict when trying to complete your request.")
            del store.containers[container]
            return self.reply(204, "")
        if method in ("GET", "HEAD"):
            entries = []
            for name, is_dir in listing(objects, query):
                if is_dir:
                    entries.append({"subdir": name})
                else:
                    data, headers, stamp = objects[name]
                    entries.append({"name": name, "hash": headers["Etag"], "bytes": len(data),
                                    "content_type": headers["Content-Type"],
                                    "last_modified": time.strftime("%Y-%m-%dT%H:%M:%S", time.gmtime(stamp))
                                    + ".%06d" % int((stamp % 1) * 1e6)})
            return self.send_list(entries, as_json, head, {
                "X-Container-Object-Count": str(len(objects)),
                "X-Container-Bytes-Used": str(sum(len(v[0]) for v in objects.values()))})
        return self.reply(405, "Method Not Allowed")

    def object(self, method, container, name, head):
        store = self.server.store
        objects = store.containers.get(container)
        if objects is None:
            self.body()
            return self.reply(404, "<html><h1>Not Found</h1></html>", {"Content-Type": "text/html"}, head)
        if method == "PUT":
            data = self.body()
            etag = hashlib.md5(data).hexdigest()
            sent = self.headers.get("Etag")
            if sent and sent.strip('"').lower() != etag:
                return self.reply(422, "Unprocessable Entity")
            headers = {"Etag": etag, "Content-Type": self.headers.get("Content-Type") or "application/octet-stream"}
            headers.update({k: v for k, v in self.headers.items() if k.lower().startswith("x-object-meta-")})
            objects[name] = (data, headers, time.time())
            return self.reply(201, "", {"Etag": etag, "Last-Modified": email.utils.formatdate(usegmt=True)})
        if name not in objects:
            self.body()
            return self.reply(404, "<html><h1>Not Found</h1></html>", {"Content-Type": "text/html"}, head)
        data, headers, stamp = objects[name]
        if method == "DELETE":
            del objects[name]
            return self.reply(204, "")
        if method == "POST":
            self.body()
            kept = {k: v for k, v in headers.items() if not k.lower().startswith("x-object-meta-")}
            kept.update({k: v for k, v in self.headers.items() if k.lower().startswith("x-object-meta-")})
            objects[name] = (data, kept, stamp)
            return self.reply(202, "")
        if method not in ("GET", "HEAD"):
            return self.reply(405, "Method Not Allowed")
        out = dict(headers)
        out["Last-Modified"] = email.utils.formatdate(stamp, usegmt=True)
        out["X-Timestamp"] = "%.5f" % stamp
        out["Accept-Ranges"] = "bytes"
        wanted = self.headers.get("Range", "")
        if wanted.startswith("bytes=") and "," not in wanted:
            first, _, last = wanted[6:].partition("-")
            size = len(data)
            if first == "":
                start, end = max(0, size - int(last)), size - 1
            else:
                start, end = int(first), (int(last) if last else size - 1)
            end = min(end, size - 1)
            if start >= size or start > end:
                return self.reply(416, "", {"Content-Range": "bytes */%d" % size}, head)
            out["Content-Range"] = "bytes %d-%d/%d" % (start, end, size)
            return self.reply(206, data[start:end + 1], out, head)
        self.reply(200, data, out, head)

    # -- verbs ----------------------------------------------------------------------------------------
    def dispatch(self, method):
        path = urllib.parse.urlsplit(self.path).path.rstrip("/")
        if path == "/info" and method == "GET":
            return self.reply(200, json.dumps({"swift": {"max_file_size": 5368709122,
                                                         "container_listing_limit": 10000}}),
                              {"Content-Type": "application/json"})
        if path.endswith("/auth/v1.0") or path.endswith("/v1.0"):
            if method in ("GET", "HEAD"):
                return self.auth_v1(head=method == "HEAD")
        if path.endswith("/v2.0/tokens") and method == "POST":
            return self.auth_v2()
        if path.endswith("/v3/auth/tokens") and method == "POST":
            return self.auth_v3()
        if path.startswith("/v1/"):
            return self.storage(method)
        self.body()
        self.reply(404, "<html><h1>Not Found</h1><p>The resource could not be found.</p></html>",
                   {"Content-Type": "text/html"}, method == "HEAD")

    def do_GET(self):
        self.dispatch("GET")

    def do_HEAD(self):
        self.dispatch("HEAD")

    def do_PUT(self):
        self.dispatch("PUT")

    def do_POST(self):
        self.dispatch("POST")

    def do_DELETE(self):
        self.dispatch("DELETE")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--port", type=int, required=True)
    parser.add_argument("--user", required=True)
    parser.add_argument("--key", required=True)
    parser.add_argument("--project", default="backups")
    parser.add_argument("--domain", default="Default")
    parser.add_argument("--region", default="RegionOne")
    parser.add_argument("--container", action="append", default=[], help="a container that exists at start")
    parser.add_argument("--object", action="append", default=[], help="container/name of a small object at start")
    parser.add_argument("--verbose", action="store_true")
    options = parser.parse_args()
    server = ThreadingHTTPServer(("127.0.0.1", options.port), Handler)
    server.daemon_threads = True
    server.store = Store()
    for name in options.container:
        server.store.containers[name] = {}
    for path in options.object:
        container, _, name = path.partition("/")
        data = b"seed\n"
        server.store.containers.setdefault(container, {})[name] = (
            data, {"Etag": hashlib.md5(data).hexdigest(), "Content-Type": "application/octet-stream"}, time.time())
    server.user, server.key = options.user, options.key
    server.project, server.domain, server.region = options.project, options.domain, options.region
    server.verbose = options.verbose
    print("listening on", options.port, flush=True)
    try:
        server.serve_forever()
    except KeyboardInterrupt:
        pass


if __name__ == "__main__":
    main()
