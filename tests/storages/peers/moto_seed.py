#!/usr/bin/env python3
"""Puts what the account form tests expect into a moto S3 server: two buckets, and in one of them the
backups of two computers, one by the service's own layout and one by the older "TWB_" folders.

    moto_seed.py ENDPOINT ACCESS_KEY SECRET_KEY
"""
import sys

import boto3

endpoint, access, secret = sys.argv[1:4]
s3 = boto3.client("s3", endpoint_url=endpoint, region_name="us-east-1",
                  aws_access_key_id=access, aws_secret_access_key=secret)
s3.create_bucket(Bucket="photos-2026")
s3.create_bucket(Bucket="ledger")
s3.put_object(Bucket="ledger", Key="desk/{6f1c2a52-3c1e-4d8e-9a51-0d6f2b7c9e10}/config", Body=b"x")
s3.put_object(Bucket="ledger", Key="TWB_office/readme", Body=b"x")
