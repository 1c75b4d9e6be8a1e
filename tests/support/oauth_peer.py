#!/usr/bin/env python3
"""A small OAuth 2.0 provider with Google Cloud Storage's bucket list, for the Google account tests.

It signs every user in at once: the authorisation endpoint redirects to the client's redirect address with a
fresh code. The token endpoint trades a code once, for the redirect address it was issued for, and refresh
tokens for access tokens. The JSON API's bucket list and bucket creation take those access tokens.

Writes {"port": N} to --ready once it listens.
"""
import argparse
import base64
import itertools
import json
import secrets
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import parse_qs, urlencode, urlparse


class Provider:
    def __init__(self, client_id, client_secret, project, buckets):
        self.client_id = client_id
        self.client_secret = client_secret
        self.project = project
        self.buckets = list(buckets)
        self.codes = {}  # code -> redirect address, until spent
        self.refresh_tokens = set()
        self.access_tokens = set()
        self.counter = itertools.count(1)
        self.lock = threading.Lock()


class Handler(BaseHTTPRequestHandler):
    provider = None

    def log_message(self, fmt, *args):
        pass

    def reply(self, status, body, headers=None):
        data = json.dumps(body).encode() if body is not None else b""
        self.send_response(status)
        for name, value in (headers or {}).items():
            self.send_header(name, value)
        if body is not None:
            self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(data)))
        self.end_headers()
        self.wfile.write(data)

    def refuse(self, status, error, description=""):
        self.reply(status, {"error": error, "error_description": description})

    def authorised(self):
        value = self.headers.get("Authorization", "")
        return value.startswith("Bearer ") and value[7:] in self.provider.access_tokens

    def do_GET(self):
        url = urlparse(self.path)
        query = {k: v[0] for k, v in parse_qs(url.query).items()}
        p = self.provider
        if url.path == "/o/oauth2/auth":
            if query.get("client_id") != p.client_id:
                return self.refuse(400, "invalid_client", "unknown client")
            if query.get("response_type") != "code" or "devstorage" not in query.get("scope", ""):
                return self.refuse(400, "invalid_request", "response_type or scope")
            redirect = query.get("redirect_uri", "")
            if not redirect.startswith("http://127.0.0.1:"):
                return self.refuse(400, "invalid_request", "redirect_uri must be on loopback here")
            with p.lock:
                code = "4/code-%d-%s" % (next(p.counter), secrets.token_hex(4))
                p.codes[code] = redirect
            target = redirect + ("&" if "?" in redirect else "?") + urlencode(
                {"code": code, "state": query.get("state", ""), "scope": query["scope"]})
            return self.reply(302, None, {"Location": target})
        if url.path.rstrip("/").endswith("/b"):
            if not self.authorised():
                return self.refuse(401, "unauthorized", "no valid access token")
            if query.get("project") != p.project:
                return self.refuse(404, "notFound", "unknown project")
            items = [{"kind": "storage#bucket", "id": b, "name": b} for b in sorted(p.buckets)]
            return self.reply(200, {"kind": "storage#buckets", "items": items})
        self.refuse(404, "not_found", url.path)

    def do_POST(self):
        url = urlparse(self.path)
        length = int(self.headers.get("Content-Length", "0"))
        raw = self.rfile.read(length).decode()
        p = self.provider
        if url.path == "/oauth2/v4/token":
            if self.headers.get("Content-Type", "").split(";")[0] != "application/x-www-form-urlencoded":
                return self.refuse(400, "invalid_request", "form-encoded body expected")
            form = {k: v[0] for k, v in parse_qs(raw).items()}
            client_id, client_secret = form.get("client_id"), form.get("client_secret")
            basic = self.headers.get("Authorization", "")
            if basic.startswith("Basic "):
                client_id, _, client_secret = base64.b64decode(basic[6:]).decode().partition(":")
            if client_id != p.client_id or client_secret != p.client_secret:
                return self.refuse(401, "invalid_client", "wrong client")
            with p.lock:
                access = "ya29.%s" % secrets.token_hex(8)
                grant = form.get("grant_type")
                if grant == "authorization_code":
                    redirect = p.codes.pop(form.get("code", ""), None)
                    if redirect is None or redirect != form.get("redirect_uri"):
                        return self.refuse(400, "invalid_grant", "Bad Request")
                    refresh = "1//refresh-%s" % secrets.token_hex(8)
                    p.refresh_tokens.add(refresh)
                    p.access_tokens.add(access)
                    return self.reply(200, {"access_token": access, "refresh_token": refresh,
                                            "expires_in": 3599, "token_type": "Bearer"})
                if grant == "refresh_token" and form.get("refresh_token") in p.refresh_tokens:
                    p.access_tokens.add(access)
                    return self.reply(200, {"access_token": access, "expires_in": 3599, "token_type": "Bearer"})
            return self.refuse(400, "invalid_grant", "Bad Request")
        if url.path.rstrip("/").endswith("/b"):
            if not self.authorised():
                return self.refuse(401, "unauthorized", "no valid access token")
            name = json.loads(raw or "{}").get("name", "")
            with p.lock:
                if name in p.buckets:
                    return self.refuse(409, "conflict", "bucket exists")
                p.buckets.append(name)
            return self.reply(200, {"kind": "storage#bucket", "id": name, "name": name})
        self.refuse(404, "not_found", url.path)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--ready", required=True)
    parser.add_argument("--client-id", required=True)
    parser.add_argument("--client-secret", required=True)
    parser.add_argument("--project", required=True)
    parser.add_argument("--bucket", action="append", default=[])
    args = parser.parse_args()
    Handler.provider = Provider(args.client_id, args.client_secret, args.project, args.bucket)
    server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    with open(args.ready + ".part", "w") as f:
        json.dump({"port": server.server_address[1]}, f)
    import os
    os.replace(args.ready + ".part", args.ready)
    server.serve_forever()


if __name__ == "__main__":
    main()
