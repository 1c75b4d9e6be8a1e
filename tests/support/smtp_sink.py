#!/usr/bin/env python3
"""A small SMTP server on loopback for tests: takes mail and writes each message as a JSON file.

smtp_sink.py OUT_DIR [--port N] [--user U --password P] [--cert C --key K]
Prints "port N" once it listens (a free one without --port). With a user set, mail is taken only
after AUTH PLAIN or LOGIN with those credentials; a wrong password gets 535. With a certificate,
STARTTLS is offered and demanded before AUTH and MAIL.
"""
import argparse
import asyncio
import base64
import json
import os
import ssl
import sys


def address(argument):
    # "FROM:<a@b> SIZE=12" gives "<a@b>"
    return argument.partition(":")[2].strip().split(" ")[0]


class Session:
    def __init__(self, reader, writer, args, counter):
        self.reader, self.writer, self.args, self.counter = reader, writer, args, counter
        self.authed = args.user is None
        self.secure = args.cert is None
        self.sender, self.recipients = None, []

    async def reply(self, line):
        self.writer.write((line + "\r\n").encode())
        await self.writer.drain()

    async def readline(self):
        line = await self.reader.readline()
        if not line:
            raise ConnectionError
        return line.decode("utf-8", "replace").rstrip("\r\n")

    async def check(self, user, password):
        if user == self.args.user and password == self.args.password:
            self.authed = True
            await self.reply("235 2.7.0 Authentication successful")
        else:
            await self.reply("535 5.7.8 Authentication credentials invalid")

    async def auth(self, rest):
        mechanism, _, initial = rest.partition(" ")
        if mechanism.upper() == "PLAIN":
            if not initial:
                await self.reply("334 ")
                initial = await self.readline()
            parts = base64.b64decode(initial).decode().split("\0")
            await self.check(parts[1] if len(parts) > 2 else "", parts[-1])
        elif mechanism.upper() == "LOGIN":
            if initial:
                user = base64.b64decode(initial).decode()
            else:
                await self.reply("334 VXNlcm5hbWU6")
                user = base64.b64decode(await self.readline()).decode()
            await self.reply("334 UGFzc3dvcmQ6")
            await self.check(user, base64.b64decode(await self.readline()).decode())
        else:
            await self.reply("504 5.5.4 Unrecognized authentication type")

    async def data(self):
        await self.reply("354 End data with <CR><LF>.<CR><LF>")
        lines = []
        while True:
            line = await self.readline()
            if line == ".":
                break
            lines.append(line[1:] if line.startswith("..") else line)
        self.counter[0] += 1
        path = os.path.join(self.args.out, "mail-%03d.json" % self.counter[0])
        with open(path + ".part", "w") as f:
            json.dump({"from": self.sender, "to": self.recipients, "data": "\r\n".join(lines)}, f)
        os.rename(path + ".part", path)
        self.sender, self.recipients = None, []
        await self.reply("250 OK queued")

    async def run(self):
        await self.reply("220 sink ESMTP")
        while True:
            line = await self.readline()
            verb, _, rest = line.partition(" ")
            verb = verb.upper()
            if verb in ("EHLO", "HELO"):
                lines = ["250-sink", "250-8BITMIME"]
                if not self.secure:
                    lines.append("250-STARTTLS")
                elif self.args.user is not None:
                    lines.append("250-AUTH PLAIN LOGIN")
                lines.append("250 SIZE 10485760")
                await self.reply("\r\n".join(lines))
            elif verb == "STARTTLS" and not self.secure:
                await self.reply("220 2.0.0 Ready to start TLS")
                context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
                context.load_cert_chain(self.args.cert, self.args.key)
                await self.writer.start_tls(context)
                self.secure = True
            elif not self.secure and verb in ("AUTH", "MAIL"):
                await self.reply("530 5.7.0 Must issue a STARTTLS command first")
            elif verb == "AUTH":
                await self.auth(rest)
            elif verb == "MAIL":
                if not self.authed:
                    await self.reply("530 5.7.0 Authentication required")
                    continue
                self.sender, self.recipients = address(rest), []
                await self.reply("250 OK")
            elif verb == "RCPT":
                if self.sender is None:
                    await self.reply("503 5.5.1 MAIL first")
                    continue
                self.recipients.append(address(rest))
                await self.reply("250 OK")
            elif verb == "DATA":
                if not self.recipients:
                    await self.reply("503 5.5.1 RCPT first")
                    continue
                await self.data()
            elif verb == "RSET":
                self.sender, self.recipients = None, []
                await self.reply("250 OK")
            elif verb == "NOOP":
                await self.reply("250 OK")
            elif verb == "QUIT":
                await self.reply("221 Bye")
                break
            else:
                await self.reply("502 5.5.2 Command not recognized")


async def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("out")
    parser.add_argument("--port", type=int, default=0)
    parser.add_argument("--user")
    parser.add_argument("--password")
    parser.add_argument("--cert")
    parser.add_argument("--key")
    args = parser.parse_args()
    counter = [0]

    async def serve(reader, writer):
        try:
            await Session(reader, writer, args, counter).run()
        except (ConnectionError, ValueError, IndexError, ssl.SSLError):
            pass
        finally:
            writer.close()

    server = await asyncio.start_server(serve, "127.0.0.1", args.port)
    print("port %d" % server.sockets[0].getsockname()[1], flush=True)
    async with server:
        await server.serve_forever()


if __name__ == "__main__":
    try:
        asyncio.run(main())
    except KeyboardInterrupt:
        sys.exit(0)
