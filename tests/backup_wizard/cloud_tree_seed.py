#!/usr/bin/env python3
"""Fills moto S3 buckets for the cloud file tree tests: in "tree" two computers' folders, one with nested
folders, and a stray object outside them; in "pages" folders of exactly 1000 and of 1001 objects.

    cloud_tree_seed.py ENDPOINT ACCESS_KEY SECRET_KEY
"""
import sys
from concurrent.futures import ThreadPoolExecutor

import boto3

endpoint, access, secret = sys.argv[1:4]
s3 = boto3.client("s3", endpoint_url=endpoint, region_name="us-east-1",
                  aws_access_key_id=access, aws_secret_access_key=secret)
s3.create_bucket(Bucket="tree")
s3.create_bucket(Bucket="pages")
objects = [("tree", key) for key in ("TWB_office/docs/letter.txt", "TWB_office/docs/2026/march.txt",
                                     "TWB_office/readme.txt", "TWB_laptop/notes.txt", "stray.txt")]
objects += [("pages", "TWB_big/exact/%04d" % i) for i in range(1000)]
objects += [("pages", "TWB_big/many/%04d" % i) for i in range(1001)]
with ThreadPoolExecutor(8) as pool:
    list(pool.map(lambda object: s3.put_object(Bucket=object[0], Key=object[1], Body=b"x"), objects))
