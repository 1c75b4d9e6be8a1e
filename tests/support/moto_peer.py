#!/usr/bin/env python3
"""moto's S3 server on loopback, with keys checked, for the cloud tests.

    moto_peer.py --port PORT --keys FILE [--cert CERT --key KEY]

moto lets the first INITIAL_NO_AUTH_ACTION_COUNT requests through unsigned and checks every later one
against its IAM users. This script spends those first requests on one IAM user that may do anything,
writes its keys to FILE as JSON ({"access_key": ..., "secret_key": ...}) once the server answers, and
serves until it is killed. With --cert and --key it speaks HTTPS with that certificate.

moto 5 checks a signature against the decoded query string, so any listing with the delimiter "/"
fails with SignatureDoesNotMatch although it is signed right. The server here checks the query as it
came on the wire, as S3 does.
"""
import argparse
import json
import os
import socket
import sys
import threading
import time

IAM_REQUESTS = 3  # create_user, create_access_key, put_user_policy
os.environ["INITIAL_NO_AUTH_ACTION_COUNT"] = str(IAM_REQUESTS)

from moto.core import authorization  # noqa: E402
from moto.core import responses  # noqa: E402

_setup_class = responses.BaseResponse.setup_class


def setup_class(self, request, full_url, headers, use_raw_body=False):
    _setup_class(self, request, full_url, headers, use_raw_body)
    environ = getattr(request, "environ", None) or {}
    self._wire_uri = environ.get("RAW_URI") or environ.get("REQUEST_URI")


responses.BaseResponse.setup_class = setup_class

_authenticate = authorization.ActionAuthenticatorMixin._authenticate_and_authorize_action


def authenticate(self, iam_request_cls, resource="*"):
    wire = getattr(self, "_wire_uri", None)
    if not wire:
        return _authenticate(self, iam_request_cls, resource)
    decoded = self.uri
    self.uri = "http://peer" + wire
    try:
        return _authenticate(self, iam_request_cls, resource)
    finally:
        self.uri = decoded


authorization.ActionAuthenticatorMixin._authenticate_and_authorize_action = authenticate


def make_user(endpoint, keys_file):
    import boto3
    import botocore.config

    deadline = time.time() + 30
    host, port = endpoint.split("//")[1].split(":")
    while time.time() < deadline:
        try:
            socket.create_connection((host, int(port)), timeout=1).close()
            break
        except OSError:
            time.sleep(0.1)
    iam = boto3.client(
        "iam",
        endpoint_url=endpoint,
        region_name="us-east-1",
        aws_access_key_id="bootstrap",
        aws_secret_access_key="bootstrap",
        verify=False,
        config=botocore.config.Config(retries={"max_attempts": 1}),
    )
    iam.create_user(UserName="tidewrack")
    key = iam.create_access_key(UserName="tidewrack")["AccessKey"]
    policy = {"Version": "2012-10-17", "Statement": [{"Effect": "Allow", "Action": "*", "Resource": "*"}]}
    iam.put_user_policy(UserName="tidewrack", PolicyName="everything", PolicyDocument=json.dumps(policy))
    partial = keys_file + ".part"
    with open(partial, "w") as out:
        json.dump({"access_key": key["AccessKeyId"], "secret_key": key["SecretAccessKey"]}, out)
    os.replace(partial, keys_file)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--port", type=int, required=True)
    parser.add_argument("--keys", required=True)
    parser.add_argument("--cert")
    parser.add_argument("--key")
    args = parser.parse_args()
    scheme = "https" if args.cert else "http"
    endpoint = "%s://127.0.0.1:%d" % (scheme, args.port)

    def bootstrap():
        try:
            make_user(endpoint, args.keys)
        except Exception as error:  # the test sees no keys file and says why from our output
            print("moto_peer: no IAM user: %s" % error, file=sys.stderr, flush=True)
            os._exit(3)

    threading.Thread(target=bootstrap, daemon=True).start()
    from moto.server import main as serve

    argv = ["-H", "127.0.0.1", "-p", str(args.port)]
    if args.cert:
        argv += ["-c", args.cert, "-k", args.key]
    serve(argv)


if __name__ == "__main__":
    main()
