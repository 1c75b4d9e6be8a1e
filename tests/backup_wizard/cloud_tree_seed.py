#!/usr/bin/env python3
"""Fills a moto S3 bucket for the cloud file tree tests: two computers' folders, one with nested folders,
a stray object outside them, and folders of exactly 1000 and of 1001 objects.

    cloud_tree_seed.py ENDPOINT ACCESS_KEY SECRET_KEY BUCKET
"""
import sys
from concurrent.futures import ThreadPoolExecutor

import boto3

endpoint, access, secret, bucket = sys.argv[1:5]
s3 = boto3.client("s3", endpoint_url=endpoint, region_name="us-east-1",
                  aws_access_key_id=access, aws_secret_access_key=secret)
s3.create_bucket(Bucket=bucket)
keys = ["TWB_office/docs/letter.txt", "TWB_office/docs/2026/march.txt", "TWB_office/readme.txt",
        "TWB_laptop/notes.txt", "stray.txt"]
keys += ["TWB_office/exact/%04d" % i for i in range(1000)]
keys += ["TWB_office/many/%04d" % i for i in range(1001)]
with ThreadPoolExecutor(8) as pool:
    list(pool.map(lambda key: s3.put_object(Bucket=bucket, Key=key, Body=b"x"), keys))
